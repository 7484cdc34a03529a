#include "driverhost/InkRows.h"

#include <algorithm>

/// One plate, and what each of its amounts adds to the ink's.
struct InkRows::Part {
    PlateReader Plate;
    bool IsWhole;
    std::array<uint32_t, 256> Amounts = {};

    Part(const std::vector<PlateBand>& bands, const PlatePart& part, int64_t widthPixels)
        : Plate(bands, part.Plate, widthPixels), IsWhole(part.Part == Tone::kWhole) {
        for (std::size_t amount = 0; amount < Amounts.size(); ++amount)
            Amounts[amount] = part.Table.empty() ? static_cast<uint32_t>(amount) * kAmountUnit
                                                 : part.Table.at(amount);
    }
};

InkRows::InkRows(const std::vector<PlateBand>& bands, const InkSource& source, int64_t widthPixels)
    : row_(static_cast<std::size_t>(widthPixels)), sums_(row_.size()) {
    for (const PlatePart& part : source) {
        parts_.push_back(std::make_unique<Part>(bands, part, widthPixels));
        if (part.Part == Tone::kWhole) continue;
        hasTone_ = true;
        for (std::size_t amount = 0; amount < tone_.size(); ++amount)
            tone_[amount] = AmountOf(part.Part, static_cast<uint8_t>(amount));
    }
}

InkRows::~InkRows() = default;
InkRows::InkRows(InkRows&&) noexcept = default;

void InkRows::AddParts(bool whole) {
    for (const std::unique_ptr<Part>& part : parts_) {
        if (part->IsWhole != whole) continue;
        part->Plate.ReadRow(row_);
        for (std::size_t x = 0; x < row_.size(); ++x)
            sums_[x] += part->Amounts[row_[x]];
    }
}

void InkRows::ReadRow(std::span<uint8_t> amounts) {
    static constexpr uint32_t kHalf = kAmountUnit / 2;
    static constexpr uint32_t kFull = 255;
    const auto amountOf = [](uint32_t sum) { return std::min((sum + kHalf) / kAmountUnit, kFull); };
    std::fill(sums_.begin(), sums_.end(), 0U);
    AddParts(false);
    if (hasTone_)
        for (uint32_t& sum : sums_)
            sum = uint32_t{tone_[amountOf(sum)]} * kAmountUnit;
    AddParts(true);
    for (std::size_t x = 0; x < amounts.size(); ++x)
        amounts[x] = static_cast<uint8_t>(amountOf(sums_[x]));
}
