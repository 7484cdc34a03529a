#pragma once

#include <string_view>

/// Appends bytes to a file, made when it is absent, and closes it again. False when the system does
/// not take them. Allocates nothing, and never blocks on a pipe.
bool AppendToFile(const char* path, std::string_view bytes) noexcept;

/// Writes bytes to standard error, as they stand.
void WriteToStandardError(std::string_view bytes) noexcept;
