#include "driverhost/Pixels.h"

#include <algorithm>
#include <array>

namespace {

/// What a byte of packed pixels adds up to.
using ByteTable = std::array<uint16_t, 256>;

template <class Weight>
constexpr ByteTable MakeTable(int32_t bits, Weight weight) {
    ByteTable table = {};
    for (unsigned byte = 0; byte < table.size(); ++byte)
        for (int32_t shift = 0; shift < 8; shift += bits)
            table[byte] =
                static_cast<uint16_t>(table[byte] + weight(byte >> shift & ((1U << bits) - 1)));
    return table;
}

template <class Weight>
constexpr std::array<ByteTable, 4> MakeTables(Weight weight) {
    return {MakeTable(1, weight), MakeTable(2, weight), MakeTable(4, weight), MakeTable(8, weight)};
}

constexpr std::size_t IndexOf(int32_t bits) {
    return bits == 1 ? 0 : bits == 2 ? 1 : bits == 4 ? 2 : 3;
}

/// The sum of a byte's pixels; and how many of them are not 0.
constexpr std::array<ByteTable, 4> kSums = MakeTables([](unsigned value) { return value; });
constexpr std::array<ByteTable, 4> kCounts =
    MakeTables([](unsigned value) { return value != 0 ? 1U : 0U; });

}  // namespace

uint64_t SumOfInk(std::span<const uint8_t> line, int64_t widthPixels, int32_t bits) {
    const ByteTable& sums = kSums[IndexOf(bits)];
    const auto lineBits = static_cast<uint64_t>(widthPixels) * static_cast<uint64_t>(bits);
    const auto wholeBytes = static_cast<std::size_t>(lineBits / 8);
    uint64_t sum = 0;
    for (const uint8_t byte : line.first(wholeBytes))
        sum += sums[byte];
    const auto rest = static_cast<unsigned>(lineBits % 8);
    if (rest != 0) sum += sums[line[wholeBytes] & (0xFF00U >> rest & 0xFFU)];
    return sum;
}

LineDifference Compare(std::span<const uint8_t> a, std::span<const uint8_t> b, int32_t bits) {
    LineDifference difference;
    const auto first = std::mismatch(a.begin(), a.end(), b.begin()).first;
    if (first == a.end()) return difference;
    const ByteTable& counts = kCounts[IndexOf(bits)];
    const auto start = static_cast<std::size_t>(first - a.begin());
    for (std::size_t i = start; i < a.size(); ++i)
        difference.PixelCount += counts[a[i] ^ b[i]];
    int32_t pixel = 0;
    for (unsigned changed = a[start] ^ b[start]; changed >> (8 - bits) == 0; ++pixel)
        changed = changed << bits & 0xFFU;
    difference.FirstPixel = static_cast<int64_t>(start) * 8 / bits + pixel;
    return difference;
}
