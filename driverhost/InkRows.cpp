#include "driverhost/InkRows.h"

#include <algorithm>

/// One plate, and what each of its amounts adds to the channel.
struct InkRows::Part {
    PlateReader Plate;
    std::array<uint8_t, 256> Amounts = {};

    Part(const std::vector<PlateBand>& bands, const PlatePart& part, int64_t widthPixels)
        : Plate(bands, part.Plate, widthPixels) {
        for (std::size_t amount = 0; amount < Amounts.size(); ++amount)
            Amounts[amount] = AmountOf(part.Part, static_cast<uint8_t>(amount));
    }
};

InkRows::InkRows(const std::vector<PlateBand>& bands, const InkSource& source, int64_t widthPixels)
    : row_(static_cast<std::size_t>(widthPixels)) {
    for (const PlatePart& part : source)
        parts_.push_back(std::make_unique<Part>(bands, part, widthPixels));
}

InkRows::~InkRows() = default;
InkRows::InkRows(InkRows&&) noexcept = default;

void InkRows::ReadRow(std::span<uint8_t> amounts) {
    std::fill(amounts.begin(), amounts.end(), uint8_t{0});
    for (const std::unique_ptr<Part>& part : parts_) {
        part->Plate.ReadRow(row_);
        for (std::size_t x = 0; x < amounts.size(); ++x)
            amounts[x] = static_cast<uint8_t>(std::min(amounts[x] + part->Amounts[row_[x]], 255));
    }
}
