#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "driverhost/InkPlan.h"
#include "driverhost/Plates.h"

/// The ink amounts of one colorant, row by row: its plates' shares, added up.
class InkRows {
  public:
    InkRows(const std::vector<PlateBand>& bands, const InkSource& source, int64_t widthPixels);
    ~InkRows();
    InkRows(InkRows&&) noexcept;
    InkRows& operator=(InkRows&&) = delete;

    /// One byte a pixel, 0 to 255. Throws HostError as PlateReader does.
    void ReadRow(std::span<uint8_t> amounts);

  private:
    struct Part;
    void AddParts(bool whole);

    std::vector<std::unique_ptr<Part>> parts_;
    std::vector<uint8_t> row_;    ///< of one plate
    std::vector<uint32_t> sums_;  ///< in units of AmountTable
    bool hasTone_ = false;
    std::array<uint8_t, 256> tone_ = {};  ///< what a channel prints of an ink's amount
};
