#include "preview/ByteSums.h"

#include "platform/Processor.h"

// Compiled once for each of the vector units that matter here (CMakeLists.txt leaves the others
// out), and for what every processor of the kind has; chosen from at run time. The choice is not
// left to Highway's own library, which takes milliseconds to time the processor whenever it is
// loaded.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "preview/ByteSums.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// What the vector code looks up by the low or the high half of a byte.
#ifndef PREVIEW_BYTE_SUMS_TABLES
#define PREVIEW_BYTE_SUMS_TABLES
namespace {

struct alignas(16) HalfByteTable {
    uint8_t values[16];
};

// One bit a pixel: set bits, and the sum of their places; the high half starts at place 4.
constexpr HalfByteTable kBits = {{0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4}};
constexpr HalfByteTable kLowBitPlaces = {{0, 0, 1, 1, 2, 2, 3, 3, 3, 3, 4, 4, 5, 5, 6, 6}};
constexpr HalfByteTable kHighBitPlaces = {
    {0, 4, 5, 9, 6, 10, 11, 15, 7, 11, 12, 16, 13, 17, 18, 22}};

// Two bits a pixel: an intensity is 127 times the set bits, and 1 more for both. The place is 0 or
// 1 in the low half, 2 or 3 in the high one.
constexpr uint16_t kTwoBitUnit = 127;
constexpr HalfByteTable kLowPairPlaces = {{0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2}};
constexpr HalfByteTable kHighPairPlaces = {{0, 2, 2, 4, 3, 5, 5, 7, 3, 5, 5, 7, 6, 8, 8, 10}};
constexpr HalfByteTable kFullPairs = {{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 1, 2}};
constexpr HalfByteTable kLowFullPairPlaces = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1}};
constexpr HalfByteTable kHighFullPairPlaces = {{0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 2, 3, 3, 3, 5}};

// Intensities by a pixel's value of four bits, and by the set bits of one of eight.
constexpr HalfByteTable kFourBitInk = {
    {0, 63, 63, 85, 63, 85, 85, 127, 63, 85, 85, 127, 85, 127, 127, 255}};
constexpr HalfByteTable kEightBitInk = {{0, 31, 36, 42, 51, 63, 85, 127, 255}};

}  // namespace
#endif

HWY_BEFORE_NAMESPACE();
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

/// A byte's ink, and its ink by pixel.
struct ByteInk {
    uint32_t ink;
    uint32_t byPixel;
};

uint32_t LookUpBoth(const HalfByteTable& low, const HalfByteTable& high, uint8_t byte) {
    return uint32_t{low.values[byte & 0x0F]} + high.values[byte >> 4];
}

ByteInk InkOf(int32_t bits, uint8_t byte) {
    const uint32_t count = LookUpBoth(kBits, kBits, byte);
    switch (bits) {
        case 1:
            return {count, LookUpBoth(kLowBitPlaces, kHighBitPlaces, byte)};
        case 2:
            return {kTwoBitUnit * count + LookUpBoth(kFullPairs, kFullPairs, byte),
                    kTwoBitUnit * LookUpBoth(kLowPairPlaces, kHighPairPlaces, byte) +
                        LookUpBoth(kLowFullPairPlaces, kHighFullPairPlaces, byte)};
        case 4:
            return {LookUpBoth(kFourBitInk, kFourBitInk, byte), kFourBitInk.values[byte >> 4]};
        default:
            return {kEightBitInk.values[count], 0};
    }
}

void AddGroup(int32_t bits, const uint8_t* const rows[kGroupRows], std::size_t byteCount,
              uint16_t firstRow, const ByteSums& sums) {
    const auto add = [](uint16_t& sum, uint32_t value) {
        sum = static_cast<uint16_t>(sum + value);
    };
    for (std::size_t row = 0; row < kGroupRows; ++row) {
        const auto number = static_cast<uint32_t>(firstRow + row);
        for (std::size_t byte = 0; byte < byteCount; ++byte) {
            if (rows[row][byte] == 0) continue;
            const ByteInk ink = InkOf(bits, rows[row][byte]);
            add(sums.ink[byte], ink.ink);
            add(sums.inkByPixel[byte], ink.byPixel);
            add(sums.inkByRow[byte], ink.ink * number);
            add(sums.inkByPixelRow[byte], ink.byPixel * number);
        }
    }
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Words = hn::Repartition<uint16_t, Bytes>;
constexpr Bytes kBytes{};
constexpr Words kWords{};
constexpr hn::Half<Bytes> kHalfOfBytes{};

using ByteVector = hn::Vec<Bytes>;
using WordVector = hn::Vec<Words>;

HWY_INLINE ByteVector LowHalves(ByteVector bytes) {
    return hn::And(bytes, hn::Set(kBytes, 0x0F));
}

HWY_INLINE ByteVector HighHalves(ByteVector bytes) {
    return LowHalves(hn::BitCast(kBytes, hn::ShiftRight<4>(hn::BitCast(kWords, bytes))));
}

HWY_INLINE ByteVector LookUp(const HalfByteTable& table, ByteVector halves) {
    return hn::TableLookupBytes(hn::LoadDup128(kBytes, table.values), halves);
}

HWY_INLINE ByteVector LookUpBoth(const HalfByteTable& low, const HalfByteTable& high,
                                 ByteVector lows, ByteVector highs) {
    return hn::Add(LookUp(low, lows), LookUp(high, highs));
}

HWY_INLINE WordVector LowWords(ByteVector bytes) {
    return hn::PromoteTo(kWords, hn::LowerHalf(kHalfOfBytes, bytes));
}

HWY_INLINE WordVector HighWords(ByteVector bytes) {
    return hn::PromoteTo(kWords, hn::UpperHalf(kHalfOfBytes, bytes));
}

/// Adds the row `row` of a group to its sums; the rows come last to first, so that a row's number
/// is how often the total passes it on.
template <class Vector>
HWY_INLINE void AddRow(std::size_t row, Vector ink, Vector& total, Vector& byRow) {
    total = hn::Add(total, ink);
    if (row != 0) byRow = hn::Add(byRow, total);
}

HWY_INLINE void AddAt(uint16_t* sum, WordVector value) {
    hn::StoreU(hn::Add(hn::LoadU(kWords, sum), value), kWords, sum);
}

HWY_INLINE void AddByRow(uint16_t* sum, WordVector byRow, WordVector total, WordVector firstRow) {
    AddAt(sum, hn::Add(byRow, hn::Mul(total, firstRow)));
}

/// One vector of bytes: a group's rows in, the sums out.
struct Place {
    const uint8_t* const* rows;
    std::size_t byte;
    uint16_t firstRow;
    const ByteSums& sums;

    HWY_INLINE ByteVector Row(std::size_t row) const { return hn::LoadU(kBytes, rows[row] + byte); }
    HWY_INLINE bool IsBlank() const {
        const ByteVector any = hn::Or(hn::Or(Row(0), Row(1)), hn::Or(Row(2), Row(3)));
        return hn::AllTrue(kBytes, hn::Eq(any, hn::Zero(kBytes)));
    }
    /// `half` is 0 for the lower half of the bytes, 1 for the upper.
    HWY_INLINE void AddInk(std::size_t half, WordVector total, WordVector byRow) const {
        const std::size_t at = byte + half * hn::Lanes(kWords);
        AddAt(sums.ink + at, total);
        AddByRow(sums.inkByRow + at, byRow, total, hn::Set(kWords, firstRow));
    }
    HWY_INLINE void AddPixels(std::size_t half, WordVector total, WordVector byRow) const {
        const std::size_t at = byte + half * hn::Lanes(kWords);
        AddAt(sums.inkByPixel + at, total);
        AddByRow(sums.inkByPixelRow + at, byRow, total, hn::Set(kWords, firstRow));
    }
};

HWY_INLINE void AddOneBit(const Place& place) {
    ByteVector count = hn::Zero(kBytes), countByRow = count;
    ByteVector places = count, placesByRow = count;
    for (std::size_t row = kGroupRows; row-- > 0;) {
        const ByteVector lows = LowHalves(place.Row(row));
        const ByteVector highs = HighHalves(place.Row(row));
        AddRow(row, LookUpBoth(kBits, kBits, lows, highs), count, countByRow);
        AddRow(row, LookUpBoth(kLowBitPlaces, kHighBitPlaces, lows, highs), places, placesByRow);
    }
    place.AddInk(0, LowWords(count), LowWords(countByRow));
    place.AddInk(1, HighWords(count), HighWords(countByRow));
    place.AddPixels(0, LowWords(places), LowWords(placesByRow));
    place.AddPixels(1, HighWords(places), HighWords(placesByRow));
}

/// Intensities from counted bits and counted full pixels.
HWY_INLINE WordVector TwoBitInk(WordVector bits, WordVector full) {
    return hn::Add(hn::Mul(bits, hn::Set(kWords, kTwoBitUnit)), full);
}

HWY_INLINE void AddTwoBit(const Place& place) {
    ByteVector bits = hn::Zero(kBytes), bitsByRow = bits, full = bits, fullByRow = bits;
    ByteVector bitPlaces = bits, bitPlacesByRow = bits, fullPlaces = bits, fullPlacesByRow = bits;
    for (std::size_t row = kGroupRows; row-- > 0;) {
        const ByteVector lows = LowHalves(place.Row(row));
        const ByteVector highs = HighHalves(place.Row(row));
        AddRow(row, LookUpBoth(kBits, kBits, lows, highs), bits, bitsByRow);
        AddRow(row, LookUpBoth(kFullPairs, kFullPairs, lows, highs), full, fullByRow);
        AddRow(row, LookUpBoth(kLowPairPlaces, kHighPairPlaces, lows, highs), bitPlaces,
               bitPlacesByRow);
        AddRow(row, LookUpBoth(kLowFullPairPlaces, kHighFullPairPlaces, lows, highs), fullPlaces,
               fullPlacesByRow);
    }
    place.AddInk(0, TwoBitInk(LowWords(bits), LowWords(full)),
                 TwoBitInk(LowWords(bitsByRow), LowWords(fullByRow)));
    place.AddInk(1, TwoBitInk(HighWords(bits), HighWords(full)),
                 TwoBitInk(HighWords(bitsByRow), HighWords(fullByRow)));
    place.AddPixels(0, TwoBitInk(LowWords(bitPlaces), LowWords(fullPlaces)),
                    TwoBitInk(LowWords(bitPlacesByRow), LowWords(fullPlacesByRow)));
    place.AddPixels(1, TwoBitInk(HighWords(bitPlaces), HighWords(fullPlaces)),
                    TwoBitInk(HighWords(bitPlacesByRow), HighWords(fullPlacesByRow)));
}

HWY_INLINE void AddFourBit(const Place& place) {
    WordVector low0 = hn::Zero(kWords), low0ByRow = low0, low1 = low0, low1ByRow = low0;
    WordVector high0 = low0, high0ByRow = low0, high1 = low0, high1ByRow = low0;
    for (std::size_t row = kGroupRows; row-- > 0;) {
        const ByteVector lows = LookUp(kFourBitInk, LowHalves(place.Row(row)));
        const ByteVector highs = LookUp(kFourBitInk, HighHalves(place.Row(row)));
        AddRow(row, LowWords(lows), low0, low0ByRow);
        AddRow(row, HighWords(lows), low1, low1ByRow);
        AddRow(row, LowWords(highs), high0, high0ByRow);
        AddRow(row, HighWords(highs), high1, high1ByRow);
    }
    place.AddInk(0, hn::Add(low0, high0), hn::Add(low0ByRow, high0ByRow));
    place.AddInk(1, hn::Add(low1, high1), hn::Add(low1ByRow, high1ByRow));
    place.AddPixels(0, high0, high0ByRow);  // the low half is place 0
    place.AddPixels(1, high1, high1ByRow);
}

HWY_INLINE void AddEightBit(const Place& place) {
    WordVector ink0 = hn::Zero(kWords), ink0ByRow = ink0, ink1 = ink0, ink1ByRow = ink0;
    for (std::size_t row = kGroupRows; row-- > 0;) {
        const ByteVector bytes = place.Row(row);
        const ByteVector bits = LookUpBoth(kBits, kBits, LowHalves(bytes), HighHalves(bytes));
        const ByteVector ink = LookUp(kEightBitInk, bits);
        AddRow(row, LowWords(ink), ink0, ink0ByRow);
        AddRow(row, HighWords(ink), ink1, ink1ByRow);
    }
    place.AddInk(0, ink0, ink0ByRow);
    place.AddInk(1, ink1, ink1ByRow);
}

template <void (*add)(const Place&)>
HWY_INLINE void AddAll(const uint8_t* const rows[kGroupRows], std::size_t byteCount,
                       uint16_t firstRow, const ByteSums& sums) {
    for (std::size_t byte = 0; byte < byteCount; byte += hn::Lanes(kBytes)) {
        const Place place = {rows, byte, firstRow, sums};
        if (!place.IsBlank()) add(place);
    }
}

void AddGroup(int32_t bits, const uint8_t* const rows[kGroupRows], std::size_t byteCount,
              uint16_t firstRow, const ByteSums& sums) {
    switch (bits) {
        case 1:
            return AddAll<AddOneBit>(rows, byteCount, firstRow, sums);
        case 2:
            return AddAll<AddTwoBit>(rows, byteCount, firstRow, sums);
        case 4:
            return AddAll<AddFourBit>(rows, byteCount, firstRow, sums);
        default:
            return AddAll<AddEightBit>(rows, byteCount, firstRow, sums);
    }
}

#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace
}  // namespace HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

uint16_t MostByteSumRows(int32_t bits) {
    // The largest sum is that of inkByPixelRow (of inkByRow at 4 and 8 bits): a byte's most times
    // rows * (rows - 1) / 2, with 28, 1530, 510 and 255 for a byte.
    switch (bits) {
        case 1:
            return 64;
        case 2:
            return 8;
        case 4:
            return 16;
        case 8:
            return 20;
        default:
            return 0;
    }
}

std::vector<decltype(&AddToByteSums)> ByteSumsForms() {
    std::vector<decltype(&AddToByteSums)> forms;
#if HWY_TARGETS & HWY_AVX2
    if (HasAvx2()) forms.push_back(N_AVX2::AddGroup);
#endif
#if HWY_TARGETS & HWY_SSSE3
    if (HasSsse3()) forms.push_back(N_SSSE3::AddGroup);
#endif
    forms.push_back(HWY_STATIC_DISPATCH(AddGroup));
    return forms;
}

void AddToByteSums(int32_t bits, const uint8_t* const rows[kGroupRows], std::size_t byteCount,
                   uint16_t firstRow, const ByteSums& sums) {
    static const auto form = ByteSumsForms().front();
    form(bits, rows, byteCount, firstRow, sums);
}

#endif
