#pragma once

// Measures a screen as an eye does: by the strongest period of a picture.

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <vector>

/// A frequency in cycles an inch and its direction in degrees, 0 to 90 (a screen's lines cross).
struct Peak {
    double Frequency = 0;
    double Angle = 0;
    double Share = 0;  ///< of the picture's power, mean left out
};

/// Discrete Fourier transform of a power of two of values, in place.
inline void Transform(std::complex<double>* values, std::size_t count, std::size_t step) {
    for (std::size_t i = 1, j = 0; i < count; ++i) {
        std::size_t bit = count >> 1;
        for (; (j & bit) != 0; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j) std::swap(values[i * step], values[j * step]);
    }
    for (std::size_t length = 2; length <= count; length *= 2) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t k = i % length;
            if (k >= length / 2) continue;
            const double turn = -2 * std::numbers::pi * static_cast<double>(k);
            const auto factor = std::polar(1.0, turn / static_cast<double>(length));
            std::complex<double>& low = values[i * step];
            std::complex<double>& high = values[(i + length / 2) * step];
            const std::complex<double> turned = high * factor;
            high = low - turned;
            low += turned;
        }
    }
}

/// The peak of `inked`, whose sides are powers of two, printed at these dots per inch.
inline Peak FindPeak(const std::vector<uint8_t>& inked, std::size_t width, double xResolution,
                     double yResolution) {
    const std::size_t height = inked.size() / width;
    double mean = 0;
    for (const uint8_t pixel : inked)
        mean += pixel / static_cast<double>(inked.size());
    const auto window = [](std::size_t at, std::size_t count) {  // Hann's
        const double turn = 2 * std::numbers::pi * (static_cast<double>(at) + 0.5);
        return 0.5 - 0.5 * std::cos(turn / static_cast<double>(count));
    };
    std::vector<std::complex<double>> plane(inked.size());
    for (std::size_t i = 0; i < inked.size(); ++i)
        plane[i] = (inked[i] - mean) * window(i % width, width) * window(i / width, height);
    for (std::size_t y = 0; y < height; ++y)
        Transform(&plane[y * width], width, 1);
    for (std::size_t x = 0; x < width; ++x)
        Transform(&plane[x], height, width);

    const auto power = [&](std::size_t x, std::size_t y) {
        return std::log(std::norm(plane[y % height * width + x % width]) + 1e-9);
    };
    std::size_t best = 0;
    for (std::size_t i = 0; i < plane.size(); ++i)
        if (std::norm(plane[i]) > std::norm(plane[best])) best = i;
    const std::size_t x = best % width;
    const std::size_t y = best / width;
    const auto between = [](double before, double at, double after) {  // the parabola's top
        return 0.5 * (before - after) / (before - 2 * at + after);
    };
    const auto cycles = [](std::size_t at, double rest, std::size_t count) {
        const auto whole = static_cast<double>(count);
        const double place = static_cast<double>(at) + rest;
        return (place > whole / 2 ? place - whole : place) / whole;
    };
    const double right =
        cycles(x, between(power(x + width - 1, y), power(x, y), power(x + 1, y)), width) *
        xResolution;
    const double up =
        -cycles(y, between(power(x, y + height - 1), power(x, y), power(x, y + 1)), height) *
        yResolution;
    const double angle = std::atan2(up, right) * 180 / std::numbers::pi;
    double total = 0;
    for (const std::complex<double>& value : plane)
        total += std::norm(value);
    return {std::hypot(right, up), std::fmod(angle + 360, 90), std::norm(plane[best]) / total};
}

/// Degrees between two directions of crossing lines.
inline double AngleBetween(double a, double b) {
    const double rest = std::fmod(std::fmod(a - b, 90) + 90, 90);
    return std::min(rest, 90 - rest);
}
