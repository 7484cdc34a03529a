#pragma once

#include <string>

#include "driverhost/ChoiceOptions.h"

class CommandTree;

struct RunOptions {
    std::string Job;
    std::string OutputFolder;
    std::string Name;  ///< empty: the document's own
    ChoiceOptions Choice;
    /// Each page replaces the files of the one before.
    bool OneFolder = false;
};

/// Runs a job through the driver. Throws HostError, with the status kIncomplete when the driver
/// was content and files are missing or short.
void RunJob(const RunOptions& options);

void AddRunCommand(CommandTree& tree);
