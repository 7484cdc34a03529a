#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "driverhost/ChoiceOptions.h"

class CommandTree;
class DriverWords;

struct RunOptions {
    std::vector<std::string> Jobs;
    std::string OutputFolder;
    std::string Name;  ///< empty: the document's own
    ChoiceOptions Choice;
    int32_t Copies = 1;
    std::string Thumbnail;  ///< empty: none
    /// Each page replaces the files of the one before.
    bool OneFolder = false;
    bool Replace = false;  ///< the files of complete jobs give way
    bool Force = false;    ///< so do files that no job left
    bool Json = false;
    DriverWords* Words = nullptr;
};

/// Runs jobs through the driver one after the other and prints what came of each. Answers the
/// status of the first that is not complete. Throws HostError for options that no job can run
/// with.
int RunJobs(const RunOptions& options);

/// `words` is borrowed.
void AddRunCommand(CommandTree& tree, DriverWords& words);
