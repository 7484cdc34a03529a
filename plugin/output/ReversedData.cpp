#include "plugin/output/ReversedData.h"

#include <algorithm>
#include <cstring>

namespace {

/// Lines move through the file in blocks of about this size.
constexpr int64_t kBlockBytes = int64_t{256} * 1024;

}  // namespace

bool ReversedData::Start(const AFilePath& path, int64_t bytes) {
    Discard();
    if (!path.isValid()) return false;
    block_.resize(kBlockBytes);
    if (!file_.Create(path.fullPath())) return false;
    file_.Reserve(bytes);
    fileBytes_ = 0;
    gathered_ = 0;
    isComplete_ = true;
    return true;
}

bool ReversedData::Append(const uint8_t* data, std::size_t count) {
    while (count > 0 && isComplete_) {
        const std::size_t taken = std::min(count, block_.size() - gathered_);
        std::memcpy(block_.data() + gathered_, data, taken);
        gathered_ += taken;
        data += taken;
        count -= taken;
        if (gathered_ == block_.size()) isComplete_ = WriteBlock();
    }
    return isComplete_;
}

bool ReversedData::WriteBlock() {
    if (!file_.WriteAt(fileBytes_, block_.data(), gathered_)) return false;
    fileBytes_ += static_cast<int64_t>(gathered_);
    gathered_ = 0;
    return true;
}

GatheredData ReversedData::StartReading(int64_t recordBytes) {
    if (!IsOpen() || !isComplete_ || !WriteBlock()) return GatheredData::kNotWritten;
    recordBytes_ = recordBytes;
    recordsLeft_ = fileBytes_ / recordBytes_;
    blockRecords_ = std::max<int64_t>(kBlockBytes / recordBytes_, 1);
    block_.resize(static_cast<std::size_t>(blockRecords_ * recordBytes_));
    return GatheredData::kTaken;
}

bool ReversedData::ReadBlockBefore() {
    blockRecords_ = std::min(blockRecords_, recordsLeft_);
    recordsLeft_ -= blockRecords_;
    return file_.ReadAt(recordsLeft_ * recordBytes_, block_.data(),
                        static_cast<std::size_t>(blockRecords_ * recordBytes_));
}

void ReversedData::Discard() noexcept {
    file_.Discard();
    block_ = {};
}
