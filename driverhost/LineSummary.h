#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "driverhost/Sha256.h"

/// Adds up the lines of a channel or separation: its ink and a sum of its bytes.
class LineSummary {
  public:
    /// `widthPixels` of 1 or more are the page's: what a line holds beyond them is no ink, but
    /// part of the bytes.
    LineSummary(int64_t widthPixels, int32_t bits) : widthPixels_(widthPixels), bits_(bits) {}

    /// A packed line of at least the width's pixels.
    void Add(std::span<const uint8_t> line);

    int64_t Lines() const { return lines_; }
    /// Ink laid down, in percent of a page full of it; 0 without lines.
    double CoveragePercent() const;
    /// SHA-256 of the lines one after the other; ends the sum.
    std::string Sha256Hex() { return sum_.Hex(); }

  private:
    int64_t widthPixels_;
    int32_t bits_;
    int64_t lines_ = 0;
    double ink_ = 0;
    Sha256 sum_;
};
