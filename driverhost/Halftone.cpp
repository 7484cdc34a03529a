#include "driverhost/Halftone.h"

#include <algorithm>

namespace {

template <unsigned kBits>
void PackRow(std::span<const uint8_t> amounts, const ThresholdMatrix& matrix,
             const PagePoint& place, std::span<uint8_t> packed) {
    const auto& thresholds = matrix.Row(place.Row);
    const auto first = static_cast<std::size_t>(place.Column);
    constexpr unsigned kTopLevel = (1U << kBits) - 1;
    constexpr unsigned kFull = 255;
    constexpr std::size_t kPixelsPerByte = 8 / kBits;
    for (std::size_t byte = 0; byte < packed.size(); ++byte) {
        unsigned value = 0;
        for (std::size_t i = 0; i < kPixelsPerByte; ++i) {
            const std::size_t x = byte * kPixelsPerByte + i;
            unsigned level = 0;
            if (x < amounts.size()) {
                const unsigned scaled = amounts[x] * kTopLevel;
                level = scaled / kFull;
                if (scaled % kFull > thresholds[(first + x) % ThresholdMatrix::kSide]) ++level;
            }
            value = value << kBits | level;
        }
        packed[byte] = static_cast<uint8_t>(value);
    }
}

}  // namespace

void HalftoneRow(std::span<const uint8_t> amounts, int32_t bits, const ThresholdMatrix& matrix,
                 const PagePoint& place, std::span<uint8_t> packed) {
    switch (bits) {
        case 1:
            PackRow<1>(amounts, matrix, place, packed);
            break;
        case 2:
            PackRow<2>(amounts, matrix, place, packed);
            break;
        case 4:
            PackRow<4>(amounts, matrix, place, packed);
            break;
        default:
            std::copy(amounts.begin(), amounts.end(), packed.begin());
            break;
    }
}
