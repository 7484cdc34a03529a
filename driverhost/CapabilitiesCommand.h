#pragma once

#include <string>

class CommandTree;

struct CapabilitiesOptions {
    std::string Model;
    bool Json = false;
};

/// Prints what a model offers: lists, defaults and the combinations that it allows. Throws
/// HostError.
void ShowCapabilities(const CapabilitiesOptions& options);

void AddCapabilitiesCommand(CommandTree& tree);
