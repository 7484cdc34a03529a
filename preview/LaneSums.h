#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// A part of a packed byte whose pixels all fall into one column of the preview. The first part of
/// byte i is lane i; further parts stand behind the bytes.
struct Lane {
    uint32_t byte = 0;
    uint8_t mask = 0;
    int32_t column = 0;  ///< of the preview
};

/// The lanes of a packed line. `columns` has one entry a pixel; a byte's first pixel is its least
/// significant one. Spare pixels of the last byte are in no lane.
std::vector<Lane> CutIntoLanes(std::span<const int32_t> columns, int32_t bits);

/// Sums of one lane over a number of lines. An intensity is 0 to 255, a position the pixel's place
/// in its byte; a line's weight is 1 for the last line added, 2 for the one before, and so on.
struct LaneSum {
    uint64_t intensity = 0;
    uint64_t position = 0;           ///< of intensity times position
    uint64_t weightedIntensity = 0;  ///< of intensity times weight
    uint64_t weightedPosition = 0;
};

/// Gathers whole packed lines into sums by lane, exactly. The work is done on bytes and words, so
/// that it costs the same whatever ink the lines hold.
class LaneSums {
  public:
    /// Lines that can be added before the sums must be taken.
    static constexpr int32_t kMostLines = 2048;

    /// Borrows `lanes`. `byteCount` of the line's bytes hold pixels.
    LaneSums(const std::vector<Lane>& lanes, std::size_t byteCount, int32_t bits);

    /// Bytes that the line lacks count as no ink.
    void AddLine(std::span<const uint8_t> line);
    int32_t LineCount() const { return lineCount_; }
    /// Hands over the sums of every lane and begins anew.
    void Take(std::vector<LaneSum>& sums);

  private:
    void Spread(std::span<const uint8_t> line);
    void AddBits();
    void AddValues();
    void FlushGroup();

    const std::vector<Lane>& lanes_;
    std::size_t byteCount_;
    int32_t bits_;
    int32_t lineCount_ = 0;
    std::vector<uint8_t> masks_;   ///< of the lanes that stand at their bytes
    std::vector<uint64_t> work_;   ///< a line, a byte a lane
    std::vector<uint32_t> table_;  ///< intensity and, 16 bits higher, intensity times position

    // One-bit lines: sums of a few lines, a byte a lane, positions of weighted sums in 16 bits.
    int32_t groupLines_ = 0;
    std::vector<uint64_t> counts_;
    std::vector<uint64_t> weightedCounts_;
    std::vector<uint64_t> positions_;
    std::vector<uint64_t> weightedEven_;
    std::vector<uint64_t> weightedOdd_;

    std::vector<uint32_t> intensity_;
    std::vector<uint32_t> position_;
    std::vector<uint32_t> weightedIntensity_;
    std::vector<uint32_t> weightedPosition_;
};
