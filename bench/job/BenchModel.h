#pragma once

#include <filesystem>
#include <string>

#include "BenchContainer.h"

/// How the model of the job has its channels written, and what beside them.
struct BenchModel {
    bool isRaw = false;          ///< raw channel files, else TIFF
    bool isInterleaved = false;  ///< line by line, else channel by channel
    bool isReversed = false;     ///< bottom line first
    int whiteType = 0;           ///< white treatment; 0 for none
    std::string preview;         ///< "BMP" or "PNG"; empty for none
    bool hasSideFiles = false;   ///< a binary header and a job ticket
};

inline constexpr const char* kBenchModelName = "Bench";
inline constexpr const char* kBenchPreviewName = "preview";
inline constexpr double kBenchResolution = 720;  ///< dots per inch, both ways

/// The position of the colour mode that has so many bits a pixel (1, 2, 4 or 8).
int BenchColorMode(int32_t bits);

/// Writes a base folder that has this model, in place of one that stands there. Throws
/// std::runtime_error when a write fails.
void WriteBenchBase(const std::filesystem::path& folder, const BenchModel& model);

/// Writes a file and the folders that it lies in. Throws std::runtime_error when that fails.
void WriteBenchFile(const std::filesystem::path& path, const std::string& content);
