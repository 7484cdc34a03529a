#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "driverhost/Inspection.h"

/// How two files differ; nothing when they are equal.
///
/// Two TIFF channels are equal when their lines and resolution are, however they are stored. Where
/// both are channels of one width and depth the answer names the first line and pixel that
/// differ, from 0, and how many pixels do; of other files the first byte, and how many bytes do.
/// Throws HostError for a file that cannot be read, or not to its end.
std::optional<std::string> DifferenceOf(const std::filesystem::path& a,
                                        const std::filesystem::path& b,
                                        const RawShapeOptions& options, PrintedShapes& printed);
