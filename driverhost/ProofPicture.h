#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// Sums the pixels of a channel's lines over the cells of a smaller (or larger) picture. Cell i of
/// `cells` covers the pixels from i * width / cells to (i + 1) * width / cells, at least one.
class CellSums {
  public:
    /// `widthPixels` and `cells` of 1 or more.
    CellSums(int64_t widthPixels, int64_t cells, int32_t bits);

    /// Adds a packed line of at least `widthPixels` pixels.
    void AddLine(std::span<const uint8_t> line);
    /// The mean of each cell over the lines added, 0 no ink to 1 full; begins anew.
    void TakeMeans(std::span<double> means);

  private:
    int32_t bits_;
    std::vector<int64_t> starts_;  ///< first pixel of each cell
    std::vector<int64_t> ends_;    ///< one past its last
    std::vector<uint64_t> sums_;
    int64_t lines_ = 0;
};

/// The colour of every pixel of a picture's row: the mean over an area in which each ink covers
/// its amount by chance. Where inks meet their colours multiply; where none lies, `paper` shows.
/// `amounts` has one row of amounts, 0 to 1, for each of `inks`; colours are 0x00BBGGRR; `rgb`
/// receives 3 bytes a pixel.
void ComposeRow(const std::vector<std::vector<double>>& amounts, std::span<const uint32_t> inks,
                uint32_t paper, std::span<uint8_t> rgb);
