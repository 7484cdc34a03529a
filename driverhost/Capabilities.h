#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "driverhost/DriverInterface.h"

/// One combination that a model may print; identifiers as the driver lists them.
struct PrintChoice {
    int32_t Media = 0;
    int32_t PrintMode = 0;
    int32_t Resolution = 0;
    int32_t ColorMode = 0;  ///< position
};

/// The colour modes that one media, print mode and resolution allow.
struct AllowedModes {
    std::vector<int32_t> Positions;  ///< empty: the combination is refused
    int32_t Default = -1;            ///< the driver's own when it is allowed, else the first
};

struct ColorMode {
    int32_t Position = 0;
    std::string Name;  ///< empty when no combination names it
    std::vector<ColorantInfo> Colorants;
};

struct PrintModes {
    CapabilityList Items;
    int32_t DefaultPosition = 0;
};

/// What one model offers, asked from the driver. Every query throws HostError when the driver
/// answers none.
class Capabilities {
  public:
    /// Asks for the media, which makes the driver read the model's description.
    Capabilities(DriverInterface& driver, const std::string& model);

    const std::string& Model() const { return model_; }
    const CapabilityList& Media() const { return media_; }
    int32_t DefaultMedia() const { return defaultMedia_; }
    PrintModes PrintModesOf(int32_t media) const;
    ResolutionList ResolutionsOf(int32_t media, int32_t printMode) const;
    AllowedModes ColorModesOf(const PrintChoice& choice) const;
    /// All colour modes by position.
    const std::vector<ColorMode>& ColorModes() const { return colorModes_; }

  private:
    PrintSettings SettingsOf(const PrintChoice& choice) const;
    void ReadColorModes();
    void NameColorModes();

    DriverInterface& driver_;
    std::string model_;
    CapabilityList media_;
    int32_t defaultMedia_ = 0;
    std::vector<ColorMode> colorModes_;
};
