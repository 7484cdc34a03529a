#include "plugin/output/ReversedData.h"

#include <algorithm>

#include "host/AFile.h"

namespace {

/// Lines move through the file in blocks of about this size.
constexpr int64_t kBlockBytes = int64_t{256} * 1024;

}  // namespace

bool ReversedData::Start(const AFilePath& path, int64_t bytes) {
    Discard();
    if (!path.isValid()) return false;
    path_ = path;
    AFile::DeleteFileA(path_, 1);
    stream_ = OpenStream(path_.fullPath().c_str(), "wb");
    if (!IsOpen()) return false;
    hasFile_ = true;
    streamBuffer_.resize(kBlockBytes);
    std::setvbuf(stream_.get(), streamBuffer_.data(), _IOFBF, streamBuffer_.size());
    ReserveSpace(stream_.get(), bytes);
    return true;
}

bool ReversedData::Append(const uint8_t* data, std::size_t count) {
    return std::fwrite(data, 1, count, stream_.get()) == count;
}

bool ReversedData::StartReading(int64_t recordBytes) {
    if (!IsOpen()) return false;
    recordBytes_ = recordBytes;
    const int64_t bytes = TellStream(stream_.get());
    // A full disk can show as late as here, so the answer counts.
    if (std::fclose(stream_.release()) != 0 || bytes < 0) return false;
    stream_ = OpenStream(path_.fullPath().c_str(), "rb");
    recordsLeft_ = IsOpen() ? bytes / recordBytes_ : 0;
    blockRecords_ = std::max<int64_t>(kBlockBytes / recordBytes_, 1);
    block_.resize(static_cast<std::size_t>(blockRecords_ * recordBytes_));
    return true;
}

bool ReversedData::ReadBlockBefore() {
    blockRecords_ = std::min(blockRecords_, recordsLeft_);
    if (blockRecords_ == 0) return false;
    recordsLeft_ -= blockRecords_;
    const auto count = static_cast<std::size_t>(blockRecords_ * recordBytes_);
    return SeekStream(stream_.get(), recordsLeft_ * recordBytes_, SEEK_SET) &&
           std::fread(block_.data(), 1, count, stream_.get()) == count;
}

void ReversedData::Discard() {
    if (!hasFile_) return;
    stream_.reset();
    AFile::DeleteFileA(path_, 1);
    hasFile_ = false;
    block_ = {};
}
