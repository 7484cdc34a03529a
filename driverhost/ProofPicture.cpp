#include "driverhost/ProofPicture.h"

#include <algorithm>
#include <cmath>

namespace {

/// Sum of the pixels [start, end) of a packed line.
uint64_t SumOf(std::span<const uint8_t> line, int64_t start, int64_t end, int32_t bits) {
    const int64_t pixelsPerByte = 8 / bits;
    const uint32_t mask = (1U << bits) - 1;
    uint64_t sum = 0;
    for (int64_t pixel = start; pixel < end;) {
        const uint32_t byte = line[static_cast<std::size_t>(pixel / pixelsPerByte)];
        const int64_t next = std::min((pixel / pixelsPerByte + 1) * pixelsPerByte, end);
        if (byte == 0) {
            pixel = next;
            continue;
        }
        for (; pixel < next; ++pixel) {
            const int64_t place = pixel % pixelsPerByte;
            sum += byte >> (8 - bits - place * bits) & mask;
        }
    }
    return sum;
}

}  // namespace

CellSums::CellSums(int64_t widthPixels, int64_t cells, int32_t bits) : bits_(bits) {
    for (int64_t cell = 0; cell < cells; ++cell) {
        starts_.push_back(cell * widthPixels / cells);
        ends_.push_back(std::max((cell + 1) * widthPixels / cells, starts_.back() + 1));
    }
    sums_.resize(starts_.size());
}

void CellSums::AddLine(std::span<const uint8_t> line) {
    for (std::size_t cell = 0; cell < sums_.size(); ++cell)
        sums_[cell] += SumOf(line, starts_[cell], ends_[cell], bits_);
    ++lines_;
}

void CellSums::TakeMeans(std::span<double> means) {
    const double full = static_cast<double>((1 << bits_) - 1) * static_cast<double>(lines_);
    for (std::size_t cell = 0; cell < sums_.size(); ++cell) {
        const auto pixels = static_cast<double>(ends_[cell] - starts_[cell]);
        means[cell] = static_cast<double>(sums_[cell]) / (pixels * full);
        sums_[cell] = 0;
    }
    lines_ = 0;
}

void ComposeRow(const std::vector<std::vector<double>>& amounts, std::span<const uint32_t> inks,
                uint32_t paper, std::span<uint8_t> rgb) {
    constexpr int kSamples = 3;
    for (std::size_t pixel = 0; pixel * kSamples < rgb.size(); ++pixel) {
        for (int sample = 0; sample < kSamples; ++sample) {
            const int shift = 8 * sample;
            double printed = 1;  // on white paper
            double bare = 1;     // the share of the area without any ink
            for (std::size_t ink = 0; ink < inks.size(); ++ink) {
                const double amount = amounts[ink][pixel];
                const double color = static_cast<double>(inks[ink] >> shift & 0xFF) / 255;
                printed *= 1 - amount * (1 - color);
                bare *= 1 - amount;
            }
            const double white = static_cast<double>(paper >> shift & 0xFF) / 255;
            const double value = printed - bare * (1 - white);
            rgb[pixel * kSamples + static_cast<std::size_t>(sample)] =
                static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
        }
    }
}
