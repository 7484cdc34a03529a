#include "driverhost/pictures/Exif.h"

#include <cmath>

namespace {

// Tags and types of EXIF 2.3, which are those of TIFF 6.
constexpr uint32_t kOrientation = 0x0112;
constexpr uint32_t kXResolution = 0x011A;
constexpr uint32_t kYResolution = 0x011B;
constexpr uint32_t kResolutionUnit = 0x0128;
constexpr uint32_t kUnitCentimetre = 3;
constexpr double kCentimetresPerInch = 2.54;

/// Whole numbers at places of a block; 0 beyond its end.
class Block {
  public:
    explicit Block(std::span<const uint8_t> bytes)
        : bytes_(bytes), bigEndian_(!bytes.empty() && bytes[0] == 'M') {}

    uint32_t Number(uint64_t at, uint64_t size) const {
        uint32_t value = 0;
        if (at > bytes_.size() || bytes_.size() - at < size) return 0;
        for (uint64_t i = 0; i < size; ++i)
            value = value << 8 | bytes_[at + (bigEndian_ ? i : size - 1 - i)];
        return value;
    }
    double Fraction(uint64_t at) const {
        const uint32_t divisor = Number(at + 4, 4);
        return divisor == 0 ? 0 : static_cast<double>(Number(at, 4)) / divisor;
    }

  private:
    std::span<const uint8_t> bytes_;
    bool bigEndian_;
};

}  // namespace

ExifNotes ReadExif(std::span<const uint8_t> block) {
    constexpr uint64_t kEntryBytes = 12;
    const Block bytes(block);
    ExifNotes notes;
    double unit = 1;
    const uint64_t directory = bytes.Number(4, 4);
    const uint32_t entries = bytes.Number(directory, 2);
    for (uint32_t i = 0; i < entries; ++i) {
        const uint64_t entry = directory + 2 + i * kEntryBytes;
        const uint64_t value = entry + 8;
        const uint32_t number = bytes.Number(value, 2);
        switch (bytes.Number(entry, 2)) {
            case kOrientation:
                if (number >= 1 && number <= 8) notes.Orientation = static_cast<int>(number);
                break;
            case kXResolution:
                notes.XDotsPerInch = bytes.Fraction(bytes.Number(value, 4));
                break;
            case kYResolution:
                notes.YDotsPerInch = bytes.Fraction(bytes.Number(value, 4));
                break;
            case kResolutionUnit:
                if (number == kUnitCentimetre) unit = kCentimetresPerInch;
                break;
            default:
                break;
        }
    }
    notes.XDotsPerInch *= unit;
    notes.YDotsPerInch *= unit;
    return notes;
}
