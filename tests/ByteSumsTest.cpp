// The sums of a preview's rows, on every vector unit of this machine and without any.

#include "preview/ByteSums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>
#include <vector>

namespace {

/// Two vectors of the longest kind.
constexpr std::size_t kBytes = 2 * kByteSumsPadding;

/// The four sums of every byte, one behind the other.
using Sums = std::vector<uint16_t>;

ByteSums Parts(Sums& sums) {
    uint16_t* const all = sums.data();
    return {all, all + kBytes, all + 2 * kBytes, all + 3 * kBytes};
}

/// Pixel by pixel.
Sums Expected(int bits, const std::vector<std::vector<uint8_t>>& rows) {
    std::vector<uint64_t> exact(4 * kBytes);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t byte = 0; byte < kBytes; ++byte) {
            for (int pixel = 0; pixel * bits < 8; ++pixel) {
                const uint32_t value = rows[row][byte] >> (pixel * bits) & ((1U << bits) - 1);
                if (value == 0) continue;
                // One-bit pixels are counted.
                const auto ink =
                    static_cast<uint64_t>(bits == 1 ? 1 : 255 / (bits + 1 - std::popcount(value)));
                const auto place = static_cast<uint64_t>(pixel);
                exact[byte] += ink;
                exact[kBytes + byte] += ink * place;
                exact[2 * kBytes + byte] += ink * row;
                exact[3 * kBytes + byte] += ink * row * place;
            }
        }
    }
    Sums sums;
    for (const uint64_t value : exact)
        sums.push_back(static_cast<uint16_t>(std::min<uint64_t>(value, 0xFFFF)));
    return sums;
}

TEST(ByteSums, EveryVectorUnitGivesTheSumsOfThePixels) {
    std::mt19937 random(7);
    for (const auto& form : ByteSumsForms()) {
        for (const int bits : {1, 2, 4, 8}) {
            for (const bool isFull : {false, true}) {
                SCOPED_TRACE(testing::Message() << bits << " bits, full " << isFull);
                std::vector<std::vector<uint8_t>> rows(MostByteSumRows(bits),
                                                       std::vector<uint8_t>(kBytes, 0xFF));
                for (std::vector<uint8_t>& row : rows)
                    for (std::size_t byte = 0; !isFull && byte < kBytes; ++byte)
                        row[byte] = static_cast<uint8_t>(byte < kBytes / 2 ? random() : 0);
                Sums sums(4 * kBytes);
                for (std::size_t row = 0; row < rows.size(); row += kGroupRows) {
                    const uint8_t* const group[] = {rows[row].data(), rows[row + 1].data(),
                                                    rows[row + 2].data(), rows[row + 3].data()};
                    form(bits, group, kBytes, static_cast<uint16_t>(row), Parts(sums));
                }
                EXPECT_EQ(sums, Expected(bits, rows));
            }
        }
    }
}

}  // namespace
