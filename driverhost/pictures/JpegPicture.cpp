#include <fmt/format.h>

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "driverhost/HostError.h"
#include "driverhost/pictures/Exif.h"
#include "driverhost/pictures/PictureFormats.h"

// These need <cstdio> before them.
#include <jerror.h>
#include <jpeglib.h>

namespace fs = std::filesystem;

namespace {

constexpr double kCentimetresPerInch = 2.54;

/// A progressive picture is decoded as a whole: two bytes for each of its samples.
constexpr long kMostMemory = 1L << 30;

/// Real ones have about ten; each goes through the whole picture.
constexpr int kMostScans = 500;

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr unsigned kWholeMarker = 0xFFFF;

struct CloseStream {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
struct FreeBlock {
    void operator()(JOCTET* block) const { std::free(block); }
};

/// libjpeg, and what it said when it gave up.
struct Decoder {
    std::unique_ptr<std::FILE, CloseStream> File;
    jpeg_decompress_struct Jpeg = {};
    jpeg_error_mgr Errors = {};
    jpeg_progress_mgr Progress = {};
    std::jmp_buf Jump = {};
    char Fault[JMSG_LENGTH_MAX] = "";

    Decoder() = default;
    ~Decoder() { jpeg_destroy_decompress(&Jpeg); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
};

[[noreturn]] void JumpOut(j_common_ptr jpeg) {
    auto* const decoder = static_cast<Decoder*>(jpeg->client_data);
    jpeg->err->format_message(jpeg, decoder->Fault);
    std::longjmp(decoder->Jump, 1);
}

/// libjpeg fills what is missing with grey and warns: the picture is damaged. Other warnings leave
/// it as it is.
void TakeMessage(j_common_ptr jpeg, int level) {
    if (level >= 0) return;
    switch (jpeg->err->msg_code) {
        case JWRN_ADOBE_XFORM:
        case JWRN_BOGUS_ICC:
        case JWRN_BOGUS_PROGRESSION:
        case JWRN_EXTRANEOUS_DATA:
        case JWRN_JFIF_MAJOR:
            return;
        default:
            JumpOut(jpeg);
    }
}

void WatchScans(j_common_ptr jpeg) {
    if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > kMostScans)
        ERREXIT(jpeg, JERR_BAD_PROGRESSION);
}

// libjpeg leaves a failed call by longjmp, which must not pass a frame with destructors: each of
// these frames has none.
bool ReadHeader(Decoder& decoder) {
    if (setjmp(decoder.Jump) != 0) return false;
    jpeg_decompress_struct& jpeg = decoder.Jpeg;
    jpeg.err = jpeg_std_error(&decoder.Errors);
    jpeg.err->error_exit = &JumpOut;
    jpeg.err->emit_message = &TakeMessage;
    jpeg.client_data = &decoder;
    jpeg_create_decompress(&jpeg);
    jpeg.mem->max_memory_to_use = kMostMemory;
    decoder.Progress.progress_monitor = &WatchScans;
    jpeg.progress = &decoder.Progress;
    jpeg_stdio_src(&jpeg, decoder.File.get());
    jpeg_save_markers(&jpeg, kExifMarker, kWholeMarker);
    jpeg_save_markers(&jpeg, kProfileMarker, kWholeMarker);
    return jpeg_read_header(&jpeg, TRUE) == JPEG_HEADER_OK;
}

bool Start(Decoder& decoder, J_COLOR_SPACE colors) {
    if (setjmp(decoder.Jump) != 0) return false;
    decoder.Jpeg.out_color_space = colors;
    return jpeg_start_decompress(&decoder.Jpeg) != FALSE;
}

bool ReadOneRow(Decoder& decoder, uint8_t* row) {
    if (setjmp(decoder.Jump) != 0) return false;
    return jpeg_read_scanlines(&decoder.Jpeg, &row, 1) == 1;
}

bool ReadProfile(Decoder& decoder, JOCTET** profile, unsigned* bytes) {
    if (setjmp(decoder.Jump) != 0) return false;
    return jpeg_read_icc_profile(&decoder.Jpeg, profile, bytes) != FALSE;
}

class JpegPicture final : public PictureReader {
  public:
    explicit JpegPicture(const fs::path& path) : path_(path) {
        decoder_.File.reset(std::fopen(path.string().c_str(), "rb"));
        if (!decoder_.File)
            throw HostError(kFailed, fmt::format("{} cannot be read", path.string()));
        if (!ReadHeader(decoder_)) Refuse();
        header_.Width = decoder_.Jpeg.image_width;
        header_.Rows = decoder_.Jpeg.image_height;
        CheckPictureSize(path, header_.Width, header_.Rows);
        ReadColors();
        ReadNotes();
    }

    void ReadRow(std::span<uint8_t> samples) override {
        if (!isStarted_ && !Start(decoder_, libraryColors_)) Refuse();
        isStarted_ = true;
        if (!ReadOneRow(decoder_, samples.data())) Refuse();
        if (inverted_)
            for (uint8_t& sample : samples)
                sample = static_cast<uint8_t>(~sample);
    }

  private:
    [[noreturn]] void Refuse() const {
        if (decoder_.Errors.msg_code == JERR_NO_BACKING_STORE)
            throw HostError(kFailed,
                            fmt::format("{} is too large for a progressive JPEG", path_.string()));
        throw HostError(kFailed,
                        fmt::format("{} is a damaged JPEG: {}", path_.string(), decoder_.Fault));
    }

    void ReadColors() {
        switch (decoder_.Jpeg.jpeg_color_space) {
            case JCS_GRAYSCALE:
                header_.Colors = PictureColors::kGray;
                libraryColors_ = JCS_GRAYSCALE;
                return;
            case JCS_RGB:
            case JCS_YCbCr:
                header_.Colors = PictureColors::kRgb;
                libraryColors_ = JCS_RGB;
                return;
            case JCS_CMYK:
            case JCS_YCCK:
                header_.Colors = PictureColors::kCmyk;
                libraryColors_ = JCS_CMYK;
                // Programs that leave this marker store how much ink is missing.
                inverted_ = decoder_.Jpeg.saw_Adobe_marker != FALSE;
                return;
            default:
                throw HostError(kFailed, fmt::format("{} has {} colours of an unknown kind",
                                                     path_.string(), decoder_.Jpeg.num_components));
        }
    }

    void ReadNotes() {
        constexpr std::string_view kHead("Exif\0\0", 6);
        const jpeg_decompress_struct& jpeg = decoder_.Jpeg;
        for (auto marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
            if (marker->marker != kExifMarker || marker->data_length < kHead.size() ||
                std::memcmp(marker->data, kHead.data(), kHead.size()) != 0)
                continue;
            const ExifNotes notes =
                ReadExif({marker->data + kHead.size(), marker->data_length - kHead.size()});
            header_.Orientation = notes.Orientation;
            header_.XDotsPerInch = notes.XDotsPerInch;
            header_.YDotsPerInch = notes.YDotsPerInch;
            break;
        }
        // 1: dots per inch, 2: dots per centimetre (JFIF 1.02).
        if (jpeg.saw_JFIF_marker != FALSE && (jpeg.density_unit == 1 || jpeg.density_unit == 2)) {
            const double perInch = jpeg.density_unit == 2 ? kCentimetresPerInch : 1;
            header_.XDotsPerInch = jpeg.X_density * perInch;
            header_.YDotsPerInch = jpeg.Y_density * perInch;
        }
        JOCTET* block = nullptr;
        unsigned bytes = 0;
        if (!ReadProfile(decoder_, &block, &bytes)) return;
        const std::unique_ptr<JOCTET, FreeBlock> profile(block);
        header_.Profile.assign(block, block + bytes);
    }

    fs::path path_;
    Decoder decoder_;
    J_COLOR_SPACE libraryColors_ = JCS_UNKNOWN;
    bool inverted_ = false;
    bool isStarted_ = false;
};

}  // namespace

std::unique_ptr<PictureReader> OpenJpegPicture(const fs::path& path) {
    return std::make_unique<JpegPicture>(path);
}
