#include "driverhost/pictures/DeflateFile.h"

#include <new>

#include "driverhost/FreeSpace.h"
#include "driverhost/HostError.h"

namespace {

constexpr std::size_t kBlockBytes = 64 << 10;

}  // namespace

DeflateFile::DeflateFile(const std::filesystem::path& path)
    : path_(path), file_(path, std::ios::binary | std::ios::trunc), block_(kBlockBytes) {
    // The fastest: the file lives as long as the job is made.
    if (deflateInit(&stream_, Z_BEST_SPEED) != Z_OK) throw std::bad_alloc();
    if (!file_) Fail();
}

DeflateFile::~DeflateFile() {
    deflateEnd(&stream_);
}

void DeflateFile::Write(std::string_view text) {
    if (!file_.write(text.data(), static_cast<std::streamsize>(text.size()))) Fail();
    position_ += static_cast<int64_t>(text.size());
}

void DeflateFile::BeginCompressed() {
    deflateReset(&stream_);
}

void DeflateFile::WriteCompressed(std::span<const uint8_t> bytes) {
    stream_.next_in = const_cast<uint8_t*>(bytes.data());  // read only, for all its type
    stream_.avail_in = static_cast<uInt>(bytes.size());
    Deflate(Z_NO_FLUSH);
}

void DeflateFile::EndCompressed() {
    Deflate(Z_FINISH);
}

void DeflateFile::Deflate(int flush) {
    do {
        stream_.next_out = block_.data();
        stream_.avail_out = static_cast<uInt>(block_.size());
        deflate(&stream_, flush);
        Write({reinterpret_cast<const char*>(block_.data()), block_.size() - stream_.avail_out});
    } while (stream_.avail_out == 0);
}

void DeflateFile::Close() {
    file_.close();
    if (!file_) Fail();
}

void DeflateFile::Fail() const {
    throw HostError(kFailed, WriteFailure(path_));
}
