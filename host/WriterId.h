#pragma once

#include <cstdint>

/// Tells what one driver object, or one options page, writes from what another one of this process
/// writes at the same time: its number is a part of the names that unfinished files carry. A
/// default-constructed one is the program's that writes for itself, number 0.
class WriterId {
  public:
    WriterId() = default;
    /// One that nobody else in this process has.
    static WriterId Next();

    uint32_t Number() const { return number_; }

  private:
    explicit WriterId(uint32_t number) : number_(number) {}
    uint32_t number_ = 0;
};
