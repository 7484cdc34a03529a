#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>
#include <vector>

#include "preview/PreviewGeometry.h"

/// The preview evaluated pixel by pixel, four additions for each pixel with ink: what the scaler
/// is held against, in its result by the tests and in its cost by the benchmark.
class DirectPreview {
  public:
    explicit DirectPreview(const PreviewGeometry& geometry) : geometry_(geometry) {
        for (auto& plane : planes_)
            plane.assign(Rows() * Columns(), 0.0);
    }
    void AddRow(int row, std::span<const uint8_t> line, int bits, std::size_t plane) {
        int counter = 0;
        const uint32_t mask = (1U << bits) - 1;
        for (const uint8_t byte : line) {
            for (int shift = 0; shift < 8; shift += bits, ++counter) {
                const uint32_t value = static_cast<uint32_t>(byte) >> shift & mask;
                if (value == 0) continue;
                const int intensity = 255 / (bits + 1 - std::popcount(value));
                AddSample(geometry_.sourceWidth - 1 - counter, geometry_.sourceHeight - 1 - row,
                          plane, intensity);
            }
        }
    }
    /// Red, green and blue.
    std::array<int, 3> Pixel(int x, int y) const {
        double inks[4];
        for (std::size_t plane = 0; plane < 4; ++plane)
            inks[plane] = planes_[plane][static_cast<std::size_t>(y) * Columns() +
                                         static_cast<std::size_t>(x)] *
                          (geometry_.scaleX * geometry_.scaleY);
        std::array<int, 3> rgb;
        for (std::size_t i = 0; i < 3; ++i)
            rgb[i] =
                255 - static_cast<int>(std::min(255.0, inks[i] * (1 - inks[3] / 255) + inks[3]));
        return rgb;
    }

  private:
    std::size_t Columns() const { return static_cast<std::size_t>(geometry_.previewWidth) + 1; }
    std::size_t Rows() const { return static_cast<std::size_t>(geometry_.previewHeight) + 1; }
    void AddSample(int x, int y, std::size_t plane, int intensity) {
        if (x < 0 || x >= geometry_.sourceWidth || y < 0 || y >= geometry_.sourceHeight) return;
        const double fx = x * geometry_.scaleX + geometry_.offsetX;
        const double fy = y * geometry_.scaleY + geometry_.offsetY;
        const auto column = static_cast<std::size_t>(fx);
        const auto row = static_cast<std::size_t>(fy);
        const double dx = fx - static_cast<double>(column);
        const double dy = fy - static_cast<double>(row);
        double* const cell = planes_[plane].data() + row * Columns() + column;
        cell[0] += (1 - dx) * (1 - dy) * intensity;
        cell[1] += dx * (1 - dy) * intensity;
        cell[Columns()] += (1 - dx) * dy * intensity;
        cell[Columns() + 1] += dx * dy * intensity;
    }

    PreviewGeometry geometry_;
    std::array<std::vector<double>, 4> planes_;
};
