#pragma once

#include "platform/Locale.h"

/// Gives the calling thread the "C" locale's numbers for its own lifetime, then its former
/// locale again.
class ALocaleSwitcher {
  public:
    ALocaleSwitcher() = default;

  private:
    ThreadCNumbers numbers_;
};
