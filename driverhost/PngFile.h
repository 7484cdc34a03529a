#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

/// Writes an RGB picture of 8 bits a sample, row by row from the top, as PNG. Throws HostError
/// when a write fails. A picture that is not closed is removed.
class PngFile {
  public:
    /// Sides of 1 to 1,000,000 pixels.
    PngFile(const std::filesystem::path& path, int64_t widthPixels, int64_t heightPixels);
    ~PngFile();
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    /// `rgb` has 3 bytes a pixel.
    void WriteRow(std::span<const uint8_t> rgb);
    /// After the last row; everything is on its way to the disk when this returns.
    void Close();

  private:
    struct Encoder;

    [[noreturn]] void Fail() const;

    std::filesystem::path path_;
    std::unique_ptr<Encoder> encoder_;
};

/// Whether a file begins as a PNG picture does.
bool IsPngFile(const std::filesystem::path& path);
