#pragma once

#include <cstdint>
#include <filesystem>
#include <nlohmann/json_fwd.hpp>

#include "driverhost/PrintedShapes.h"

namespace CLI {
class App;
}

/// What the user says of raw channel files; 0: not said.
struct RawShapeOptions {
    int64_t WidthPixels = 0;  ///< of the page
    int32_t Bits = 0;
};

/// Adds --width and --bits to a command.
void AddRawShapeOptions(CLI::App& command, RawShapeOptions& options);

/// The shape of a raw channel: what the user says, else what a record says.
std::optional<PrintedShape> ShapeOf(const std::filesystem::path& file,
                                    const RawShapeOptions& options, PrintedShapes& printed);

/// Looks into a job file, a container or a channel file, row by row in bounded memory.
///
/// Answers an object with `file`, `kind` ("job", "container" or "channel") and what the file
/// says; what a file does not say is null. The `sha256` of a channel is that of its lines, of a
/// separation that of the lines that a channel printed top line first gets: rows padded with zeros
/// to whole 32-pixel words of the page's deepest separation. What is wrong with a part stands
/// beside it as `error`. Throws HostError for a file that cannot be looked into at all.
nlohmann::ordered_json Inspect(const std::filesystem::path& file, const RawShapeOptions& options,
                               PrintedShapes& printed);

/// Whether the object, or a part of it, has an `error`.
bool HasError(const nlohmann::ordered_json& inspected);
