#pragma once

#include <string>

#include "driverhost/ChoiceOptions.h"

class CommandTree;

struct HalftoneOptions {
    std::string Model;
    std::string Manufacturer;
    ChoiceOptions Choice;
    bool Json = false;
    std::string Plot;    ///< PNG file; empty: none
    bool Force = false;  ///< replace a file that is no picture
};

/// Prints the dither and screening parameters of one combination, with the files and entries that
/// they come from, and draws the screens. Throws HostError.
void ShowHalftone(const HalftoneOptions& options);

void AddHalftoneCommand(CommandTree& tree);
