#include <fmt/format.h>
#include <png.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "driverhost/FreeSpace.h"
#include "driverhost/HostError.h"
#include "driverhost/pictures/Exif.h"
#include "driverhost/pictures/PictureFormats.h"

namespace fs = std::filesystem;

namespace {

constexpr double kMetresPerInch = 0.0254;
constexpr char kPassesName[] = "passes";

struct CloseStream {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// libpng, and what it said when it gave up.
struct Decoder {
    std::unique_ptr<std::FILE, CloseStream> File;
    png_structp Png = nullptr;
    png_infop Info = nullptr;
    char Fault[128] = "";

    Decoder() = default;
    ~Decoder() { png_destroy_read_struct(&Png, &Info, nullptr); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
};

void IgnoreWarning(png_structp /*png*/, png_const_charp /*text*/) {}
void JumpOut(png_structp png, png_const_charp text) {
    auto* const decoder = static_cast<Decoder*>(png_get_error_ptr(png));
    std::snprintf(decoder->Fault, sizeof decoder->Fault, "%s", text);
    png_longjmp(png, 1);
}

// libpng leaves a failed call by longjmp, which must not pass a frame with destructors: each of
// these frames has none.
bool ReadInfo(const Decoder& decoder) {
    if (setjmp(png_jmpbuf(decoder.Png)) != 0) return false;
    png_init_io(decoder.Png, decoder.File.get());
    // The sides are checked in one place for all formats.
    png_set_user_limits(decoder.Png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_read_info(decoder.Png, decoder.Info);
    return true;
}

/// Everything becomes grey or RGB of 8 bits, with or without alpha.
bool SetUp(const Decoder& decoder) {
    if (setjmp(png_jmpbuf(decoder.Png)) != 0) return false;
    png_set_expand(decoder.Png);
    png_set_scale_16(decoder.Png);
    png_set_interlace_handling(decoder.Png);
    png_read_update_info(decoder.Png, decoder.Info);
    return true;
}

bool ReadOneRow(const Decoder& decoder, uint8_t* row) {
    if (setjmp(png_jmpbuf(decoder.Png)) != 0) return false;
    png_read_row(decoder.Png, row, nullptr);
    return true;
}

class PngPicture final : public PictureReader {
  public:
    PngPicture(const fs::path& path, fs::path workFolder)
        : path_(path), workFolder_(std::move(workFolder)) {
        decoder_.File.reset(std::fopen(path.string().c_str(), "rb"));
        decoder_.Png =
            png_create_read_struct(PNG_LIBPNG_VER_STRING, &decoder_, &JumpOut, &IgnoreWarning);
        if (decoder_.Png != nullptr) decoder_.Info = png_create_info_struct(decoder_.Png);
        if (!decoder_.File || decoder_.Info == nullptr)
            throw HostError(kFailed, fmt::format("{} cannot be read", path.string()));
        if (!ReadInfo(decoder_)) Refuse();
        header_.Width = png_get_image_width(decoder_.Png, decoder_.Info);
        header_.Rows = png_get_image_height(decoder_.Png, decoder_.Info);
        CheckPictureSize(path, header_.Width, header_.Rows);
        isInterlaced_ = png_get_interlace_type(decoder_.Png, decoder_.Info) != PNG_INTERLACE_NONE;
        ReadNotes();
        if (!SetUp(decoder_)) Refuse();
        sampleCount_ = png_get_channels(decoder_.Png, decoder_.Info);
        header_.Colors = sampleCount_ < 3 ? PictureColors::kGray : PictureColors::kRgb;
        row_.resize(png_get_rowbytes(decoder_.Png, decoder_.Info));
        if (isInterlaced_) header_.SpoolBytes = header_.Rows * std::ssize(row_);
    }

    void ReadRow(std::span<uint8_t> samples) override {
        if (isInterlaced_)
            ReadAssembledRow();
        else if (!ReadOneRow(decoder_, row_.data()))
            Refuse();
        const std::size_t colors = SamplesOf(header_.Colors);
        if (colors == sampleCount_) {
            std::memcpy(samples.data(), row_.data(), samples.size());
            return;
        }
        const uint8_t* pixel = row_.data();
        for (std::size_t at = 0; at < samples.size(); at += colors, pixel += sampleCount_)
            for (std::size_t i = 0; i < colors; ++i)
                samples[at + i] = OnWhite(pixel[i], pixel[colors], 255);
    }

  private:
    [[noreturn]] void Refuse() const {
        throw HostError(kFailed,
                        fmt::format("{} is a damaged PNG: {}", path_.string(), decoder_.Fault));
    }

    void ReadNotes() {
        png_uint_32 x = 0;
        png_uint_32 y = 0;
        int unit = 0;
        if (png_get_pHYs(decoder_.Png, decoder_.Info, &x, &y, &unit) != 0 &&
            unit == PNG_RESOLUTION_METER) {
            header_.XDotsPerInch = x * kMetresPerInch;
            header_.YDotsPerInch = y * kMetresPerInch;
        }
        png_uint_32 bytes = 0;
        png_bytep exif = nullptr;
        if (png_get_eXIf_1(decoder_.Png, decoder_.Info, &bytes, &exif) != 0)
            header_.Orientation = ReadExif({exif, bytes}).Orientation;
        png_charp name = nullptr;
        png_bytep profile = nullptr;
        int compression = 0;
        if (png_get_iCCP(decoder_.Png, decoder_.Info, &name, &compression, &profile, &bytes) != 0)
            header_.Profile.assign(profile, profile + bytes);
    }

    /// Each pass of an interlaced picture adds its pixels to rows that are kept in a file.
    void AssemblePasses() {
        constexpr int kPasses = 7;
        rows_.open(workFolder_ / kPassesName,
                   std::ios::binary | std::ios::in | std::ios::out | std::ios::trunc);
        const auto bytes = static_cast<std::streamsize>(row_.size());
        for (int pass = 0; pass < kPasses; ++pass) {
            for (int64_t y = 0; y < header_.Rows; ++y) {
                if (pass > 0) {
                    rows_.seekg(y * bytes);
                    rows_.read(reinterpret_cast<char*>(row_.data()), bytes);
                }
                if (!ReadOneRow(decoder_, row_.data())) Refuse();
                rows_.seekp(y * bytes);
                rows_.write(reinterpret_cast<const char*>(row_.data()), bytes);
            }
        }
        rows_.seekg(0);
    }

    void ReadAssembledRow() {
        if (!rows_.is_open()) AssemblePasses();
        rows_.read(reinterpret_cast<char*>(row_.data()), static_cast<std::streamsize>(row_.size()));
        if (!rows_) throw HostError(kFailed, WriteFailure(workFolder_ / kPassesName));
    }

    fs::path path_;
    fs::path workFolder_;
    Decoder decoder_;
    bool isInterlaced_ = false;
    std::fstream rows_;
    std::size_t sampleCount_ = 1;
    std::vector<uint8_t> row_;
};

}  // namespace

std::unique_ptr<PictureReader> OpenPngPicture(const fs::path& path, const fs::path& workFolder) {
    return std::make_unique<PngPicture>(path, workFolder);
}
