#include "PrinterDriver/Common/Xsrc/RepackBits.h"

#include <algorithm>

void RepackRow(int32_t bits, int64_t bitCount, std::span<const uint8_t> source, int32_t repeat,
               int64_t& bitPosition, std::span<uint8_t> destination) {
    const auto cleared =
        std::min(static_cast<std::size_t>((bitCount * repeat + 7) / 8), destination.size());
    std::fill_n(destination.begin(), cleared, uint8_t{0});

    const int32_t mask = (1 << bits) - 1;
    const auto destinationBits = static_cast<int64_t>(destination.size()) * 8;
    const auto sourceBytes = std::min(static_cast<std::size_t>((bitCount + 7) / 8), source.size());
    int64_t at = bitPosition;
    for (const uint8_t byte : source.first(sourceBytes)) {
        for (int32_t shift = 0; shift < 8; shift += bits) {
            const int32_t value = (byte >> (8 - bits - shift)) & mask;
            for (int32_t i = 0; i < repeat && at + bits <= destinationBits; ++i, at += bits) {
                const auto place = static_cast<int32_t>(8 - at % 8) - bits;
                destination[static_cast<std::size_t>(at / 8)] |=
                    static_cast<uint8_t>(value << place);
            }
        }
    }
    bitPosition += bitCount * repeat;
}
