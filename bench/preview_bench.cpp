// What a row of a page costs the preview, against the same preview evaluated pixel by pixel. Both
// take the same rows by turns, and each line below is the median of the rounds.

#include <fmt/format.h>

#include <cstdint>
#include <ctime>
#include <random>
#include <vector>

#include "DirectPreview.h"
#include "Median.h"
#include "preview/PreviewScaler.h"

namespace {

constexpr int kWidthPixels = 20'000;
constexpr int kHeightLines = 28'000;
constexpr int kPreviewSide = 500;
constexpr int kResolution = 720;
constexpr int kDirectRows = 112;  ///< two rows of the preview
constexpr int kScalerRows = 40 * kDirectRows;
constexpr int kRounds = 9;

/// A row whose bits are set with the chance of `percent`, as ordered and error-diffused halftones
/// have them: without any order.
std::vector<uint8_t> RandomRow(int bits, int percent, std::mt19937& random) {
    std::bernoulli_distribution isSet(percent / 100.0);
    std::vector<uint8_t> row(static_cast<std::size_t>(kWidthPixels) *
                             static_cast<std::size_t>(bits) / 8);
    for (uint8_t& byte : row) {
        for (unsigned bit = 0; bit < 8; ++bit)
            byte = static_cast<uint8_t>(byte | (isSet(random) ? 1U << bit : 0U));
    }
    return row;
}

template <class AddRow>
double NanosecondsPerRow(int rows, AddRow&& addRow) {
    const std::clock_t start = std::clock();  // of the processor, whatever else the machine does
    for (int row = 0; row < rows; ++row)
        addRow(row);
    return static_cast<double>(std::clock() - start) * 1e9 / CLOCKS_PER_SEC / rows;
}

void Compare(int bits, int percent) {
    constexpr std::size_t kDistinctRows = 61;
    std::mt19937 random(20260401);
    std::vector<std::vector<uint8_t>> page;
    for (std::size_t row = 0; row < kDistinctRows; ++row)
        page.push_back(RandomRow(bits, percent, random));
    const auto rowAt = [&](int row) -> const std::vector<uint8_t>& {
        return page[static_cast<std::size_t>(row) % kDistinctRows];
    };
    std::vector<double> scalerTimes;
    std::vector<double> ratios;
    for (int round = 0; round < kRounds; ++round) {
        PreviewScaler scaler;
        scaler.InitBestFit(kPreviewSide, kWidthPixels, kHeightLines, kResolution, kResolution);
        DirectPreview direct(scaler.Geometry());
        const double directTime = NanosecondsPerRow(
            kDirectRows, [&](int row) { direct.AddRow(row, rowAt(row), bits, 0); });
        scalerTimes.push_back(NanosecondsPerRow(kScalerRows, [&](int row) {
            scaler.AddRow(row, rowAt(row).data(), static_cast<int>(rowAt(row).size()), bits, 0);
        }));
        ratios.push_back(directTime / scalerTimes.back());
    }
    fmt::print(
        "{} bit, {:3}% of the bits set: {:6.0f} ns a row of {} bytes, {:4.0f} times as fast\n",
        bits, percent, Median(scalerTimes), page[0].size(), Median(ratios));
    std::fflush(stdout);
}

}  // namespace

int main() {
    fmt::print("{} x {} pixels into a preview of {}, {} rows at a time, {} rounds\n", kWidthPixels,
               kHeightLines, kPreviewSide, kScalerRows, kRounds);
    for (const int percent : {0, 1, 15, 50, 100})
        Compare(1, percent);
    for (const int bits : {2, 4, 8})
        Compare(bits, 50);
    return 0;
}
