#include "host/ContainerHandle.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr std::size_t kWindowBytes = std::size_t{32} * 1024;

// Read, not mapped, without the first directory (which need not be the one wanted), strip arrays
// on demand, and strips as they stand in the file instead of cut into smaller ones.
constexpr const char* kOpenMode = "rmhOc";

/// No single allocation of libtiff's has cause to exceed what the file itself holds, but for the
/// decoders' tables, which are small.
std::uint64_t MostAllocation(const RandomAccessFile& file) {
    constexpr std::uint64_t kDecoderBytes = std::uint64_t{64} * 1024 * 1024;
    return file.Size() + kDecoderBytes;
}

}  // namespace

ContainerHandle::ContainerHandle(const RandomAccessFile& file, uint64_t offset)
    : client_(file), tiff_(OpenTiff(client_, kOpenMode, MostAllocation(file))) {
    if (tiff_ != nullptr && TIFFSetSubDirectory(tiff_.get(), offset) == 0) tiff_.reset();
}

tmsize_t ContainerHandle::Reader::Read(void* data, tmsize_t count) {
    if (count < 0) return -1;
    const auto wanted = static_cast<std::size_t>(count);
    const std::size_t got =
        wanted >= kWindowBytes ? file_.ReadAt(position_, data, wanted) : FromWindow(data, wanted);
    position_ += got;
    return static_cast<tmsize_t>(got);
}

std::size_t ContainerHandle::Reader::FromWindow(void* data, std::size_t count) {
    const bool isInside = position_ >= windowOffset_ && position_ - windowOffset_ <= windowCount_ &&
                          count <= windowCount_ - (position_ - windowOffset_);
    if (!isInside) {
        window_.resize(kWindowBytes);
        windowOffset_ = position_;
        windowCount_ = file_.ReadAt(position_, window_.data(), window_.size());
    }
    const auto start = static_cast<std::size_t>(position_ - windowOffset_);
    const std::size_t given = std::min(count, windowCount_ - start);
    std::memcpy(data, window_.data() + start, given);
    return given;
}

tmsize_t ContainerHandle::Reader::Write(void* /*data*/, tmsize_t /*count*/) {
    return -1;  // a container is only read
}

toff_t ContainerHandle::Reader::Seek(toff_t offset, int origin) {
    const toff_t from = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? position_ : file_.Size();
    position_ = from + offset;
    return position_;
}
