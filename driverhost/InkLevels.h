#pragma once

#include <array>
#include <cstdint>
#include <span>

/// How the levels of a colorant print an amount of ink: which two stand around it, and how many
/// of the pixels get the upper one.
class InkLevels {
  public:
    /// 2 to the power of `bits` levels, evenly spaced.
    explicit InkLevels(int32_t bits);

    /// Levels that carry these amounts of ink, 1 being full tone: the first amount is that of
    /// level 1, level 0 carries none. Amounts beyond the last level's print that level.
    /// Throws HostError when an amount is negative, not finite or below the one before it.
    explicit InkLevels(std::span<const float> amounts);

    struct Step {
        uint8_t Level = 0;  ///< the lower level
        uint8_t Share = 0;  ///< of 255 pixels, those that get the level above
    };

    /// For an amount from 0 to 255. No ink is level 0 alone.
    Step Of(uint8_t amount) const { return steps_[amount]; }

  private:
    std::array<Step, 256> steps_ = {};
};
