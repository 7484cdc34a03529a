#include "driverhost/PngFile.h"

#include <fmt/format.h>
#include <png.h>

#include <cstdio>
#include <system_error>

#include "driverhost/HostError.h"
#include "platform/Stream.h"

namespace {

/// The errors show as failed calls; nobody reads the library's own words on standard error.
void IgnoreWarning(png_structp /*png*/, png_const_charp /*text*/) {}
void JumpOut(png_structp png, png_const_charp /*text*/) {
    png_longjmp(png, 1);
}

// libpng leaves a failed call by longjmp, which must not pass a frame with destructors: each of
// these frames has none.
bool Begin(png_structp png, png_infop info, std::FILE* file, uint32_t width, uint32_t height) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    return true;
}

bool WriteOneRow(png_structp png, const uint8_t* row) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_write_row(png, row);
    return true;
}

bool End(png_structp png) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_write_end(png, nullptr);
    return true;
}

}  // namespace

struct PngFile::Encoder {
    Stream file;
    png_structp png = nullptr;
    png_infop info = nullptr;

    Encoder() = default;
    ~Encoder() { png_destroy_write_struct(&png, &info); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;
};

PngFile::PngFile(const std::filesystem::path& path, int64_t widthPixels, int64_t heightPixels)
    : path_(path), encoder_(std::make_unique<Encoder>()) {
    Encoder& encoder = *encoder_;
    encoder.file.reset(std::fopen(path.string().c_str(), "wb"));
    encoder.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &JumpOut, &IgnoreWarning);
    if (encoder.png != nullptr) encoder.info = png_create_info_struct(encoder.png);
    if (!encoder.file || encoder.info == nullptr ||
        !Begin(encoder.png, encoder.info, encoder.file.get(), static_cast<uint32_t>(widthPixels),
               static_cast<uint32_t>(heightPixels)))
        Fail();
}

PngFile::~PngFile() {
    if (!encoder_->file) return;
    // Half a picture is none.
    encoder_->file.reset();
    std::error_code error;
    std::filesystem::remove(path_, error);
}

void PngFile::WriteRow(std::span<const uint8_t> rgb) {
    if (!WriteOneRow(encoder_->png, rgb.data())) Fail();
}

void PngFile::Close() {
    if (!End(encoder_->png) || std::fclose(encoder_->file.release()) != 0) Fail();
}

void PngFile::Fail() const {
    throw HostError(kFailed, fmt::format("cannot write {}; is the disk full?", path_.string()));
}

bool IsPngFile(const std::filesystem::path& path) {
    constexpr std::size_t kSignatureBytes = 8;
    png_byte signature[kSignatureBytes] = {};
    const Stream file = OpenStream(path.string().c_str(), "rb");
    return file != nullptr &&
           std::fread(signature, 1, kSignatureBytes, file.get()) == kSignatureBytes &&
           png_sig_cmp(signature, 0, kSignatureBytes) == 0;
}
