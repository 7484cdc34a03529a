#pragma once

#include <filesystem>

/// Before a command writes a file: what stands there gives way when it is empty or of the kind that
/// is written, for then the command is only run again; another file may be somebody's work.
/// `kind` names what is written, for example "a PNG picture". Throws HostError.
void RefuseToReplaceOther(const std::filesystem::path& path,
                          bool (*isOfKind)(const std::filesystem::path&), const char* kind,
                          bool force);
