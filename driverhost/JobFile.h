#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
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
    DriverOptionBlock Options = {};
    /// The white choice, for the case that the options file is not there; -1: none chosen.
    std::optional<int32_t> White;
};

/// The files of a job.
std::filesystem::path ContainerOf(const std::filesystem::path& job);
std::filesystem::path SettingsOf(const std::filesystem::path& job);

/// The white choice that a job's settings keep; nothing when they keep none.
std::optional<int32_t> ReadKeptWhite(const std::filesystem::path& job);
/// Has a job's settings keep a white choice. Throws HostError.
void KeepWhite(const std::filesystem::path& job, int32_t type);

/// Write the two small files of a job. Throw HostError when a write fails.
void WriteJobHeader(const std::filesystem::path& file, const JobSettings& settings);
void WriteJobSettings(const std::filesystem::path& file, const JobSettings& settings);

/// Throws HostError for a document that a job is yet to be made from.
void RefuseArtwork(const std::filesystem::path& path);
/// Whether these can be a job's first bytes: they name a model.
bool IsJobHeader(const JobFileHeader& header);
/// Whether a file is a job file, or job settings, as make-job writes them.
bool IsJobFile(const std::filesystem::path& path);
bool IsSettingsFile(const std::filesystem::path& path);

/// Reads a job's header. Throws HostError for a file that is missing or too short, and for artwork.
JobFileHeader ReadJobHeader(const std::filesystem::path& job);

/// Reads a job's header and the settings beside it. Throws HostError as above, and for settings
/// that are not written as above.
JobSettings ReadJob(const std::filesystem::path& job);
