#pragma once

#include <cstdint>
#include <filesystem>

/// One page of four ink channels.
struct BenchPage {
    int64_t widthPixels = 0;
    int64_t rows = 0;
    int32_t bits = 1;  ///< per pixel and channel

    int64_t RowBytes() const { return (widthPixels * bits + 7) / 8; }
    int64_t Bytes() const { return RowBytes() * rows * kChannels; }

    static constexpr int32_t kChannels = 4;
};

/// The internal names of the page's channels, in order.
inline constexpr const char* kBenchColorants[BenchPage::kChannels] = {"Cyan", "Magenta", "Yellow",
                                                                      "Black"};

/// Writes a job container of one page, in strips of about 256 KiB. About 15 % of the bits are
/// ink, at random and the same in every run. `compression` is libtiff's number. Throws
/// std::runtime_error when a write fails.
void WriteBenchContainer(const std::filesystem::path& path, const BenchPage& page,
                         uint16_t compression);
