#include "plugin/output/LineReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

/// Lines move out of the file in blocks of about this size.
constexpr int64_t kBlockBytes = int64_t{256} * 1024;

}  // namespace

void LineReader::Start(ReadBytesAt read, int64_t fileBytes, int64_t lineBytes, bool lastLineFirst) {
    read_ = std::move(read);
    fileBytes_ = fileBytes;
    bytesLeft_ = fileBytes;
    lineBytes_ = lineBytes;
    lastLineFirst_ = lastLineFirst;
    hasFailed_ = false;
    const int64_t blockLines = std::max<int64_t>(kBlockBytes / lineBytes, 1);
    block_.resize(static_cast<std::size_t>(blockLines * lineBytes));
    blockBytes_ = 0;
    place_ = 0;
    line_.assign(static_cast<std::size_t>(lineBytes), 0);
}

bool LineReader::ReadBlock() {
    blockBytes_ = std::min(static_cast<int64_t>(block_.size()), bytesLeft_);
    if (lastLineFirst_) blockBytes_ -= blockBytes_ % lineBytes_;
    if (blockBytes_ <= 0) return false;
    const int64_t offset = lastLineFirst_ ? bytesLeft_ - blockBytes_ : fileBytes_ - bytesLeft_;
    bytesLeft_ -= blockBytes_;
    place_ = lastLineFirst_ ? blockBytes_ : 0;
    hasFailed_ = !read_(offset, block_.data(), static_cast<std::size_t>(blockBytes_));
    return !hasFailed_;
}

uint8_t* LineReader::Next() {
    if (hasFailed_) return nullptr;
    const bool isUsedUp = lastLineFirst_ ? place_ == 0 : place_ == blockBytes_;
    if (isUsedUp && !ReadBlock()) return nullptr;
    if (lastLineFirst_) {
        place_ -= lineBytes_;
        return block_.data() + place_;
    }
    uint8_t* const line = block_.data() + place_;
    const int64_t count = std::min(lineBytes_, blockBytes_ - place_);
    place_ += count;
    if (count == lineBytes_ && bytesLeft_ + blockBytes_ - place_ >= lineBytes_) return line;
    // The last whole line is kept, for what may end behind it within a line.
    std::memcpy(line_.data(), line, static_cast<std::size_t>(count));
    return line_.data();
}
