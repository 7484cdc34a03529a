#include "preview/LaneSums.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr std::size_t kWordBytes = 8;
/// Lines whose weighted counts fit into a byte a lane: 8 pixels of each, 8 * (1 + … + 7) = 224.
constexpr int32_t kGroupLines = 7;
constexpr uint32_t kFullIntensity = 255;

/// The intensity of a pixel: by the number of its value's set bits, not by the value.
uint32_t IntensityOf(uint32_t value, int32_t bits) {
    const int setBits = std::popcount(value);
    return setBits == 0 ? 0 : kFullIntensity / static_cast<uint32_t>(bits + 1 - setBits);
}

std::vector<uint32_t> TableOf(int32_t bits) {
    std::vector<uint32_t> table(256);
    const uint32_t mask = (1U << bits) - 1;
    for (uint32_t byte = 0; byte < table.size(); ++byte) {
        for (int32_t place = 0; place * bits < 8; ++place) {
            const uint32_t intensity = IntensityOf(byte >> (place * bits) & mask, bits);
            table[byte] += intensity | (intensity * static_cast<uint32_t>(place)) << 16;
        }
    }
    return table;
}

}  // namespace

std::vector<Lane> CutIntoLanes(std::span<const int32_t> columns, int32_t bits) {
    const auto pixelsPerByte = static_cast<std::size_t>(8 / bits);
    const uint32_t pixelMask = (1U << bits) - 1;
    std::vector<Lane> lanes((columns.size() + pixelsPerByte - 1) / pixelsPerByte);
    std::vector<Lane> further;
    for (std::size_t pixel = 0; pixel < columns.size(); ++pixel) {
        const std::size_t byte = pixel / pixelsPerByte;
        const auto place = static_cast<int>(pixel % pixelsPerByte);
        const uint32_t mask = pixelMask << (place * bits);
        const bool continues = place != 0 && columns[pixel] == columns[pixel - 1];
        const bool isFirst = place == 0;
        if (isFirst) lanes[byte] = {static_cast<uint32_t>(byte), 0, columns[pixel]};
        if (!isFirst && !continues)
            further.push_back({static_cast<uint32_t>(byte), 0, columns[pixel]});
        const bool isFurther = !further.empty() && further.back().byte == byte;
        Lane& lane = isFurther ? further.back() : lanes[byte];
        lane.mask = static_cast<uint8_t>(lane.mask | mask);
    }
    lanes.insert(lanes.end(), further.begin(), further.end());
    return lanes;
}

LaneSums::LaneSums(const std::vector<Lane>& lanes, std::size_t byteCount, int32_t bits)
    : lanes_(lanes), byteCount_(byteCount), bits_(bits) {
    const std::size_t words = (lanes.size() + kWordBytes - 1) / kWordBytes;
    masks_.resize(byteCount);
    for (std::size_t lane = 0; lane < byteCount; ++lane)
        masks_[lane] = lanes[lane].mask;
    work_.resize(words);
    if (bits == 1) {
        for (auto* sums : {&counts_, &weightedCounts_, &positions_, &weightedEven_, &weightedOdd_})
            sums->resize(words);
    } else {
        table_ = TableOf(bits);
    }
    for (auto* sums : {&intensity_, &position_, &weightedIntensity_, &weightedPosition_})
        sums->resize(words * kWordBytes);
}

/// Gives every lane a byte of its own.
void LaneSums::Spread(std::span<const uint8_t> line) {
    auto* const work = reinterpret_cast<uint8_t*>(work_.data());
    const std::size_t count = std::min(line.size(), byteCount_);
    for (std::size_t byte = 0; byte < count; ++byte)
        work[byte] = line[byte] & masks_[byte];
    std::fill(work + count, work + byteCount_, uint8_t{0});
    for (std::size_t lane = byteCount_; lane < lanes_.size(); ++lane) {
        const uint32_t byte = lanes_[lane].byte;
        work[lane] = byte < count ? line[byte] & lanes_[lane].mask : uint8_t{0};
    }
}

/// Counts the set bits of each byte of a word and sums their positions, all bytes at once.
void LaneSums::AddBits() {
    constexpr uint64_t kOdd = 0x5555555555555555;
    constexpr uint64_t kPairs = 0x3333333333333333;
    constexpr uint64_t kNibbles = 0x0F0F0F0F0F0F0F0F;
    constexpr uint64_t kEvenBytes = 0x00FF00FF00FF00FF;
    const std::size_t words = work_.size();
    for (std::size_t i = 0; i < words; ++i) {
        const uint64_t word = work_[i];
        const uint64_t high1 = word >> 1 & kOdd;  // the position within a pair
        const uint64_t count2 = (word & kOdd) + high1;
        const uint64_t high2 = count2 >> 2 & kPairs;
        const uint64_t count4 = (count2 & kPairs) + high2;
        const uint64_t place4 = (high1 & kPairs) + (high1 >> 2 & kPairs) + 2 * high2;
        const uint64_t high4 = count4 >> 4 & kNibbles;
        const uint64_t count8 = (count4 & kNibbles) + high4;
        const uint64_t place8 = (place4 & kNibbles) + (place4 >> 4 & kNibbles) + 4 * high4;
        counts_[i] += count8;
        weightedCounts_[i] += counts_[i];
        positions_[i] += place8;
        weightedEven_[i] += positions_[i] & kEvenBytes;
        weightedOdd_[i] += positions_[i] >> 8 & kEvenBytes;
    }
    if (++groupLines_ == kGroupLines) FlushGroup();
}

/// Adds the sums of the last few lines to those of all.
void LaneSums::FlushGroup() {
    const auto lines = static_cast<uint32_t>(groupLines_);
    const std::size_t count = intensity_.size();
    const auto* const counts = reinterpret_cast<const uint8_t*>(counts_.data());
    const auto* const weightedCounts = reinterpret_cast<const uint8_t*>(weightedCounts_.data());
    const auto* const places = reinterpret_cast<const uint8_t*>(positions_.data());
    for (std::size_t lane = 0; lane < count; ++lane) {
        weightedIntensity_[lane] += lines * intensity_[lane] + weightedCounts[lane];
        intensity_[lane] += counts[lane];
        weightedPosition_[lane] += lines * position_[lane];
        position_[lane] += places[lane];
    }
    for (std::size_t i = 0; i < work_.size(); ++i) {
        uint32_t* const weighted = weightedPosition_.data() + i * kWordBytes;
        for (std::size_t byte = 0; byte < kWordBytes; byte += 2) {
            weighted[byte] += static_cast<uint32_t>(weightedEven_[i] >> (8 * byte) & 0xFFFF);
            weighted[byte + 1] += static_cast<uint32_t>(weightedOdd_[i] >> (8 * byte) & 0xFFFF);
        }
    }
    for (auto* sums : {&counts_, &weightedCounts_, &positions_, &weightedEven_, &weightedOdd_})
        std::fill(sums->begin(), sums->end(), 0U);
    groupLines_ = 0;
}

void LaneSums::AddValues() {
    const auto* const work = reinterpret_cast<const uint8_t*>(work_.data());
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
        const uint32_t entry = table_[work[lane]];
        intensity_[lane] += entry & 0xFFFF;
        position_[lane] += entry >> 16;
    }
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
        weightedIntensity_[lane] += intensity_[lane];
        weightedPosition_[lane] += position_[lane];
    }
}

void LaneSums::AddLine(std::span<const uint8_t> line) {
    Spread(line);
    if (bits_ == 1)
        AddBits();
    else
        AddValues();
    ++lineCount_;
}

void LaneSums::Take(std::vector<LaneSum>& sums) {
    if (bits_ == 1) FlushGroup();
    const uint64_t factor = bits_ == 1 ? kFullIntensity : 1;  // one-bit sums count pixels
    sums.resize(lanes_.size());
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane)
        sums[lane] = {intensity_[lane] * factor, position_[lane] * factor,
                      weightedIntensity_[lane] * factor, weightedPosition_[lane] * factor};
    for (auto* values : {&intensity_, &position_, &weightedIntensity_, &weightedPosition_})
        std::fill(values->begin(), values->end(), 0U);
    lineCount_ = 0;
}
