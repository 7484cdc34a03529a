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

/// Whether libtiff holds a value of the tag. One that it has no memory for may be there as a null
/// pointer.
bool IsDelivered(TIFF* tiff, const ContainerTag& tag) {
    // Room for whatever the tag's kind writes: numbers, a pointer, or a count and a pointer.
    const void* values[2] = {};
    if (TIFFGetField(tiff, tag.number, &values[0], &values[1]) == 0) return false;
    const TIFFField* const field = TIFFFindField(tiff, tag.number, TIFF_ANY);
    if (TIFFFieldPassCount(field) != 0) return values[1] != nullptr;
    return TIFFFieldDataType(field) != TIFF_ASCII || values[0] != nullptr;
}

}  // namespace

ContainerHandle::ContainerHandle(const RandomAccessFile& file, const ContainerDirectory& directory)
    : client_(file), tiff_(OpenTiff(client_, kOpenMode, MostAllocation(file))) {
    const bool isRead = tiff_ != nullptr &&
                        TIFFSetSubDirectory(tiff_.get(), directory.offset) != 0 &&
                        client_.ReadError() == 0;
    if (!isRead)
        failure_ = CallFailure("a directory cannot be read");
    else if (!HasEveryTag(directory))
        failure_ = ContainerFailure("a tag of a directory cannot be read");
    if (failure_.text[0] != '\0') tiff_.reset();
}

bool ContainerHandle::HasEveryTag(const ContainerDirectory& directory) const {
    uint16_t compression = COMPRESSION_NONE;
    TIFFGetField(tiff_.get(), TIFFTAG_COMPRESSION, &compression);
    for (std::size_t i = 0; i < directory.tags.size(); ++i) {
        const ContainerTag& tag = kContainerTags[i];
        const auto* const end = tag.compressions.end();
        const bool isKnown = tag.compressions[0] == 0 ||
                             std::find(tag.compressions.begin(), end, compression) != end;
        if (directory.tags.test(i) && isKnown && !IsDelivered(tiff_.get(), tag)) return false;
    }
    return true;
}

void ContainerHandle::StartCalls() {
    client_.ForgetComplaints();
    client_.ForgetReadError();
}

ContainerFailure ContainerHandle::CallFailure(std::string_view otherwise) const {
    return client_.ReadError() == 0
               ? ContainerFailure(otherwise)
               : ContainerFailure("the file cannot be read", client_.ReadError());
}

ContainerHandle::Reader::Reader(const RandomAccessFile& file)
    : file_(file),
      window_(static_cast<std::size_t>(std::min<uint64_t>(file.Size(), kWindowBytes))) {}

tmsize_t ContainerHandle::Reader::Read(void* data, tmsize_t count) noexcept {
    if (count < 0) return -1;
    const auto wanted = static_cast<std::size_t>(count);
    const std::size_t got =
        wanted >= kWindowBytes ? ReadFile(position_, data, wanted) : FromWindow(data, wanted);
    position_ += got;
    return static_cast<tmsize_t>(got);
}

std::size_t ContainerHandle::Reader::ReadFile(uint64_t offset, void* data, std::size_t count) {
    if (offset >= file_.Size()) return 0;
    const auto most = static_cast<std::size_t>(std::min<uint64_t>(count, file_.Size() - offset));
    int error = 0;
    const std::size_t got = file_.ReadAt(offset, data, most, &error);
    if (error != 0) readError_ = error;
    return got;
}

std::size_t ContainerHandle::Reader::FromWindow(void* data, std::size_t count) {
    const bool isInside = position_ >= windowOffset_ && position_ - windowOffset_ <= windowCount_ &&
                          count <= windowCount_ - (position_ - windowOffset_);
    if (!isInside) {
        windowOffset_ = position_;
        windowCount_ = ReadFile(position_, window_.data(), window_.size());
    }
    const auto start = static_cast<std::size_t>(position_ - windowOffset_);
    const std::size_t given = std::min(count, windowCount_ - start);
    std::memcpy(data, window_.data() + start, given);
    return given;
}

tmsize_t ContainerHandle::Reader::Write(void* /*data*/, tmsize_t /*count*/) noexcept {
    return -1;  // a container is only read
}

toff_t ContainerHandle::Reader::Seek(toff_t offset, int origin) noexcept {
    const toff_t from = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? position_ : file_.Size();
    position_ = from + offset;
    return position_;
}
