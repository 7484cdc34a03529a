#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

/// What a channel file holds. A raw file does not say so itself.
struct ChannelShape {
    int64_t WidthPixels = 0;  ///< as stored: padded to whole 32-pixel words
    int64_t Lines = 0;
    int32_t Bits = 1;        ///< 1, 2, 4 or 8 per pixel
    double XResolution = 0;  ///< dots per inch; 0 when the file does not say
    double YResolution = 0;

    /// Bytes of one line.
    int64_t LineBytes() const { return (WidthPixels * Bits + 7) / 8; }
};

/// Whether a file's name is that of a TIFF channel; every other name is a raw one.
bool IsTiffName(const std::filesystem::path& path);

/// Reads the lines of a channel file in any order; a higher value is more ink. Holds one strip of
/// the file in memory.
class ChannelFile {
  public:
    virtual ~ChannelFile() = default;

    const ChannelShape& Shape() const { return shape_; }
    /// The `LineBytes()` bytes of a line, packed most significant bit first; valid until the next
    /// call. Throws HostError for a line that cannot be read.
    virtual std::span<const uint8_t> Line(int64_t line) = 0;

  protected:
    explicit ChannelFile(const ChannelShape& shape) : shape_(shape) {}

    ChannelShape shape_;
};

/// Opens a TIFF of one sample a pixel in strips. Throws HostError for any other file.
std::unique_ptr<ChannelFile> OpenTiffChannel(const std::filesystem::path& path);

/// Opens a raw file whose lines are `widthPixels` wide, a multiple of 32 above 0, and counts them
/// by the file's length. Throws HostError for a file that does not hold whole lines.
std::unique_ptr<ChannelFile> OpenRawChannel(const std::filesystem::path& path, int64_t widthPixels,
                                            int32_t bits);
