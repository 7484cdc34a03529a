#pragma once

#include "host/AString.h"

#include <cstdint>
#include <utility>

/// A colorant of a job, or a separation of a page.
class AColorant {
  public:
    AColorant(AString displayName, AString internalName, uint8_t depth)
        : DisplayName(std::move(displayName)),
          InternalName(std::move(internalName)),
          Depth(depth) {}

    AString DisplayName;
    AString InternalName;
    uint8_t Depth;  ///< bits per pixel
};
