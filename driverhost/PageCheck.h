#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/PrintPlan.h"

/// What is wrong with the files of a page; paths are relative to the output folder.
struct PageFaults {
    std::vector<std::string> ShortFiles;    ///< channels
    std::vector<std::string> MissingFiles;  ///< channels
    std::vector<std::string> SideFaults;    ///< sentences about what lies beside them
    bool Any() const { return !ShortFiles.empty() || !MissingFiles.empty() || !SideFaults.empty(); }
};

/// Looks for a page's files where the plan has them. A raw channel is complete when it has all
/// lines' bytes, a TIFF one when it has the page's lines and the last can be read. `jobFolder` is
/// relative to the output folder `folder`.
PageFaults CheckPage(const std::filesystem::path& folder, const std::string& jobFolder,
                     const PlannedPage& page);
