#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/ChoiceOptions.h"
#include "driverhost/Container.h"
#include "driverhost/DriverInterface.h"
#include "driverhost/DriverWords.h"
#include "driverhost/EarlierOutput.h"
#include "driverhost/JobFile.h"
#include "driverhost/JobReport.h"

/// A job that can be run, and how.
struct ReadyJob {
    std::filesystem::path Path;
    JobFileHeader Header;
    JobSettings Settings;
    std::vector<ContainerPage> Pages;
    std::string SourceName;
    DriverInterface& Driver;
    ChosenPrint Chosen;
    int32_t Copies = 1;
    std::string Thumbnail;   ///< absolute; empty: none
    bool OneFolder = false;  ///< each page replaces the files of the one before
    Replacing MayReplace;
    bool IsQuiet = false;  ///< shows no progress
};

/// Runs one job through the driver into an output folder, and looks at what it left. `words` hears
/// the driver. Throws HostError for a job that is refused before its first page; then nothing is
/// changed, but for what Replacing allows.
void RunJob(const ReadyJob& job, const std::filesystem::path& folder, DriverWords& words,
            JobReport& report);
