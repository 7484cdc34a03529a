#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "driverhost/ProofInks.h"

/// Paints the lines of a page's channels into rows of a smaller (or larger) picture, as they will
/// be seen: paper, white ink over it, the colours on top, each taking its light away, and varnish
/// as a sheen over all. Each printed pixel is painted by itself and the picture shows the mean, so
/// that dots under, beside and over one another look different. Within a pixel that is not full,
/// each ink covers its amount by chance. Cell i of a row covers the pixels from i * width / cells
/// to (i + 1) * width / cells, at least one.
class PagePainter {
  public:
    /// `paper` is 0x00BBGGRR; `widthPixels` and `cells` are 1 or more.
    PagePainter(const std::vector<ProofInk>& inks, uint32_t paper, int64_t widthPixels,
                int64_t cells, int32_t bits);

    /// Takes a packed line of each ink, in the inks' order, of at least `widthPixels` pixels.
    void AddLine(std::span<const std::span<const uint8_t>> lines);
    /// The colours of the cells over the lines added, 3 bytes each; begins anew.
    void TakeRow(std::span<uint8_t> rgb);

  private:
    /// Red, green, blue, 0 to 255, and one that fills a vector register.
    static constexpr std::size_t kSamples = 4;
    using Color = std::array<float, kSamples>;

    /// What one amount of an ink makes of the colour under it: that times `Kept`, plus `Added`.
    struct Coat {
        Color Kept;
        Color Added;
    };

    /// One ink: where its line stands among those of AddLine, and its coat at each level.
    struct Layer {
        std::size_t Line;
        std::vector<Coat> Coats;
    };

    static Coat CoatOf(const ProofInk& ink, float amount);
    void Paint(const Layer& layer, std::span<const uint8_t> line);

    int32_t bits_;
    Color paper_;
    std::vector<Layer> layers_;    ///< from the paper up
    std::vector<Color> pixels_;    ///< of one line
    std::vector<int64_t> starts_;  ///< first pixel of each cell
    std::vector<int64_t> ends_;    ///< one past its last
    std::vector<std::array<double, kSamples>> sums_;
    int64_t lines_ = 0;
};
