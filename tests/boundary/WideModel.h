#pragma once

#include <string>

/// Name of the model that `WideModelDescription` describes.
inline constexpr const char* kWideModel = "Wide 44";

/// A description with three media, two print modes, three resolutions, four colours and four
/// colour modes, of which some combinations are refused.
std::string WideModelDescription();
