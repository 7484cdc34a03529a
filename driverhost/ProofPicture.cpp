#include "driverhost/ProofPicture.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float kFull = 255;

/// Light that full varnish lets no longer through, and the one that it reflects instead: dark
/// colours get a shimmer, white a tint.
constexpr float kSheen = 0.22F;
constexpr std::array<float, 4> kSheenLight = {196, 206, 222, 0};

std::array<float, 4> SamplesOf(uint32_t color) {
    return {static_cast<float>(color & 0xFF), static_cast<float>(color >> 8 & 0xFF),
            static_cast<float>(color >> 16 & 0xFF), 0};
}

}  // namespace

PagePainter::Coat PagePainter::CoatOf(const ProofInk& ink, float amount) {
    const Color color = SamplesOf(ink.Color);
    Coat coat = {};
    for (std::size_t sample = 0; sample < kSamples; ++sample) {
        switch (ink.Effect) {
            case InkEffect::kColor:
                coat.Kept[sample] = 1 - amount * (1 - color[sample] / kFull);
                break;
            case InkEffect::kWhite:
                coat.Kept[sample] = 1 - amount;
                coat.Added[sample] = amount * color[sample];
                break;
            case InkEffect::kVarnish:
                coat.Kept[sample] = 1 - amount * kSheen;
                coat.Added[sample] = amount * kSheen * kSheenLight[sample];
                break;
        }
    }
    return coat;
}

PagePainter::PagePainter(const std::vector<ProofInk>& inks, uint32_t paper, int64_t widthPixels,
                         int64_t cells, int32_t bits)
    : bits_(bits), paper_(SamplesOf(paper)), pixels_(static_cast<std::size_t>(widthPixels)) {
    const int32_t top = (1 << bits) - 1;
    for (const InkEffect effect : {InkEffect::kWhite, InkEffect::kColor, InkEffect::kVarnish}) {
        for (std::size_t ink = 0; ink < inks.size(); ++ink) {
            if (inks[ink].Effect != effect) continue;
            Layer& layer = layers_.emplace_back();
            layer.Line = ink;
            for (int32_t level = 0; level <= top; ++level)
                layer.Coats.push_back(
                    CoatOf(inks[ink], static_cast<float>(level) / static_cast<float>(top)));
        }
    }
    for (int64_t cell = 0; cell < cells; ++cell) {
        starts_.push_back(cell * widthPixels / cells);
        ends_.push_back(std::max((cell + 1) * widthPixels / cells, starts_.back() + 1));
    }
    sums_.resize(starts_.size());
}

void PagePainter::Paint(const Layer& layer, std::span<const uint8_t> line) {
    const auto pixelsPerByte = static_cast<std::size_t>(8 / bits_);
    const auto shift = static_cast<unsigned>(8 - bits_);
    for (std::size_t first = 0; first < pixels_.size(); first += pixelsPerByte) {
        unsigned byte = line[first / pixelsPerByte];
        if (byte == 0) continue;
        // Each level stands in the upper bits in its turn. A level of 0 changes nothing, and is
        // painted sooner than told from the others.
        const std::size_t end = std::min(first + pixelsPerByte, pixels_.size());
        for (std::size_t at = first; at < end; ++at) {
            const Coat& coat = layer.Coats[byte >> shift];
            for (std::size_t sample = 0; sample < kSamples; ++sample)
                pixels_[at][sample] = pixels_[at][sample] * coat.Kept[sample] + coat.Added[sample];
            byte = byte << bits_ & 0xFFU;
        }
    }
}

void PagePainter::AddLine(std::span<const std::span<const uint8_t>> lines) {
    std::fill(pixels_.begin(), pixels_.end(), paper_);
    for (const Layer& layer : layers_)
        Paint(layer, lines[layer.Line]);
    for (std::size_t cell = 0; cell < sums_.size(); ++cell) {
        std::array<double, kSamples>& sum = sums_[cell];
        for (auto pixel = static_cast<std::size_t>(starts_[cell]);
             pixel < static_cast<std::size_t>(ends_[cell]); ++pixel)
            for (std::size_t sample = 0; sample < kSamples; ++sample)
                sum[sample] += double{pixels_[pixel][sample]};
    }
    ++lines_;
}

void PagePainter::TakeRow(std::span<uint8_t> rgb) {
    for (std::size_t cell = 0; cell < sums_.size(); ++cell) {
        const auto pixels = static_cast<double>((ends_[cell] - starts_[cell]) * lines_);
        for (std::size_t sample = 0; sample < 3; ++sample)
            rgb[3 * cell + sample] = static_cast<uint8_t>(
                std::lround(std::clamp(sums_[cell][sample] / pixels, 0.0, double{kFull})));
        sums_[cell] = {};
    }
    lines_ = 0;
}
