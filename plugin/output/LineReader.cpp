#include "plugin/output/LineReader.h"

#include <algorithm>
#include <cstring>

namespace {

/// Lines move out of the file in blocks of about this size.
constexpr int64_t kBlockBytes = int64_t{256} * 1024;

}  // namespace

bool LineReader::Open(const AFilePath& path, int64_t lineBytes, bool lastLineFirst) {
    stream_ = path.isValid() ? OpenStream(path.fullPath().c_str(), "rb") : nullptr;
    if (stream_ == nullptr || !SeekStream(stream_.get(), 0, SEEK_END)) return false;
    bytesLeft_ = TellStream(stream_.get());
    if (!lastLineFirst && !SeekStream(stream_.get(), 0, SEEK_SET)) return false;
    // Whole blocks come from the system at once; a buffer would only copy them.
    std::setvbuf(stream_.get(), nullptr, _IONBF, 0);
    lineBytes_ = lineBytes;
    lastLineFirst_ = lastLineFirst;
    const int64_t blockLines = std::max<int64_t>(kBlockBytes / lineBytes, 1);
    block_.resize(static_cast<std::size_t>(blockLines * lineBytes));
    blockBytes_ = 0;
    place_ = 0;
    line_.assign(static_cast<std::size_t>(lineBytes), 0);
    return bytesLeft_ >= 0;
}

bool LineReader::ReadBlock() {
    blockBytes_ = std::min(static_cast<int64_t>(block_.size()), bytesLeft_);
    if (lastLineFirst_) {
        blockBytes_ -= blockBytes_ % lineBytes_;
        if (!SeekStream(stream_.get(), bytesLeft_ - blockBytes_, SEEK_SET)) return false;
    }
    if (blockBytes_ <= 0) return false;
    bytesLeft_ -= blockBytes_;
    place_ = lastLineFirst_ ? blockBytes_ : 0;
    const auto count = static_cast<std::size_t>(blockBytes_);
    return std::fread(block_.data(), 1, count, stream_.get()) == count;
}

uint8_t* LineReader::Next() {
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
