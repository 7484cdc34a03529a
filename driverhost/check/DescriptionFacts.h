#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <vector>

/// What the checks of a description learn from one another.

struct DescribedColor {
    std::string InternalName;
    std::string ChannelName;
};

struct DescribedColorMode {
    pugi::xml_node Node;
    std::string Name;             ///< for people
    std::vector<int32_t> Colors;  ///< of the colorants, in order: positions in the colour list
};

struct DescriptionFacts {
    int32_t MediaCount = 0;
    int32_t PrintModeCount = 0;
    int32_t ResolutionCount = 0;
    std::vector<pugi::xml_node> Media;
    std::vector<pugi::xml_node> PrintModes;
    std::vector<pugi::xml_node> Resolutions;
    std::vector<pugi::xml_node> ColorNodes;
    std::vector<DescribedColor> Colors;
    std::vector<DescribedColorMode> ColorModes;
};
