#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "driverhost/Capabilities.h"
#include "driverhost/TileGrid.h"
#include "host/Records.h"

/// What a job is printed with: the job file's header, and in a small JSON file beside it what the
/// header has no field for.
struct JobSettings {
    std::string Model;
    std::string SourceName;  ///< the document's file name, without folders
    double XResolution = 0;  ///< dots per inch
    double YResolution = 0;
    PrintChoice Choice;
    /// False when the file beside the job is missing: medium, print mode and resolution are then
    /// not known.
    bool HasChoice = false;
    /// How the pages are cut: the job's pages are the tiles of one page after the other.
    TileGrid Tiles;
};

/// The files of a job.
std::filesystem::path ContainerOf(const std::filesystem::path& job);
std::filesystem::path SettingsOf(const std::filesystem::path& job);

/// Write the two small files of a job. Throw HostError when a write fails.
void WriteJobHeader(const std::filesystem::path& file, const JobSettings& settings);
void WriteJobSettings(const std::filesystem::path& file, const JobSettings& settings);

/// Reads a job's header. Throws HostError for a file that is missing or too short.
JobFileHeader ReadJobHeader(const std::filesystem::path& job);

/// Reads a job's header and the settings beside it. Throws HostError as above, and for settings
/// that are not written as above.
JobSettings ReadJob(const std::filesystem::path& job);
