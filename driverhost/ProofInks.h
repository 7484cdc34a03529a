#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "driverhost/PageChannels.h"

/// What an ink does to what lies under it.
enum class InkEffect {
    kColor,   ///< takes light away: colours multiply
    kWhite,   ///< hides the paper; under the colours, whichever is printed first
    kVarnish  ///< a sheen over everything
};

struct ProofInk {
    InkEffect Effect = InkEffect::kColor;
    uint32_t Color = 0;  ///< display colour, 0x00BBGGRR
};

/// How a channel's ink looks, told by its internal name.
ProofInk InkOf(const PageChannel& channel);

/// Keeps the channels whose inks are named, in any letter case; all when no name is given. Throws
/// HostError (kUsage), naming the page's inks, for a name that none of them has.
void KeepInks(std::vector<PageChannel>& channels, const std::vector<std::string>& names);
