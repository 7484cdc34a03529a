#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>

class Rasterizer;

/// The amounts (0 to 255) of cyan, magenta, yellow and black that print each amount of a spot ink.
using ProcessAmounts = std::array<std::array<uint8_t, 256>, 4>;

/// By the spot ink's name.
using SpotInks = std::map<std::string, ProcessAmounts>;

/// What the rasteriser makes of each tint of these spot inks, by the alternate colours that its
/// document gives them. `fastColor`: without colour profiles. An ink that the document does not
/// define, or none when it cannot be read, has no entry. Works in `workFolder`.
SpotInks ReadSpotInks(Rasterizer& rasterizer, const std::filesystem::path& workFolder,
                      const std::set<std::string>& names, bool fastColor);
