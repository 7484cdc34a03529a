#pragma once

#include <string>

#include "driverhost/Capabilities.h"

namespace CLI {
class App;
}

/// What the command line says about the combination to print: names or identifiers, empty where
/// it leaves the choice to the driver's defaults.
struct ChoiceOptions {
    std::string Media;
    std::string PrintMode;
    std::string Resolution;  ///< name, "XxY" in dots per inch, or identifier
    std::string ColorMode;   ///< name or position
};

/// Adds --media, --print-mode and --resolution to a command.
void AddChoiceOptions(CLI::App& command, ChoiceOptions& options);

/// A combination and what it stands for.
struct ChosenPrint {
    PrintChoice Choice;
    ResolutionItem Resolution;
    ColorMode Mode;
};

/// Resolves the options against what the driver offers. Throws HostError naming what is unknown,
/// with the names that exist, and for a combination that the model refuses.
ChosenPrint Choose(const Capabilities& capabilities, const ChoiceOptions& options);
