#include "driverhost/Halftone.h"

namespace {

template <unsigned kBits>
void PackRow(std::span<const uint8_t> amounts, std::span<const uint8_t> thresholds,
             const InkLevels& levels, std::span<uint8_t> packed) {
    constexpr std::size_t kPixelsPerByte = 8 / kBits;
    const auto packPixels = [&](std::size_t first, std::size_t count) {
        unsigned value = 0;
        for (std::size_t x = first; x < first + count; ++x) {
            const InkLevels::Step step = levels.Of(amounts[x]);
            const unsigned level = step.Level + (step.Share > thresholds[x] ? 1U : 0U);
            value = value << kBits | level;
        }
        return value << kBits * (kPixelsPerByte - count);
    };
    const std::size_t whole = amounts.size() / kPixelsPerByte;
    for (std::size_t byte = 0; byte < whole; ++byte)
        packed[byte] = static_cast<uint8_t>(packPixels(byte * kPixelsPerByte, kPixelsPerByte));
    if (const std::size_t rest = amounts.size() % kPixelsPerByte; rest > 0)
        packed[whole] = static_cast<uint8_t>(packPixels(whole * kPixelsPerByte, rest));
}

}  // namespace

void HalftoneRow(std::span<const uint8_t> amounts, std::span<const uint8_t> thresholds,
                 const InkLevels& levels, int32_t bits, std::span<uint8_t> packed) {
    switch (bits) {
        case 1:
            return PackRow<1>(amounts, thresholds, levels, packed);
        case 2:
            return PackRow<2>(amounts, thresholds, levels, packed);
        default:
            return PackRow<4>(amounts, thresholds, levels, packed);
    }
}
