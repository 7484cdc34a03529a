#pragma once

#include <memory>

/// Gives the calling thread the "C" locale's numbers for its own lifetime, then its former
/// locale again.
class ALocaleSwitcher {
  public:
    ALocaleSwitcher();
    ~ALocaleSwitcher();
    ALocaleSwitcher(const ALocaleSwitcher&) = delete;
    ALocaleSwitcher& operator=(const ALocaleSwitcher&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state_;
};
