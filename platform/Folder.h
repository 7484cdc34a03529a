#pragma once

#include <cstddef>
#include <functional>

/// Calls `visit` with the name of everything that stands in a folder, in no order, but for itself
/// and the folder above. False when the folder cannot be read; what was read is visited.
bool VisitFolder(const char* folder, const std::function<void(const char* name)>& visit);

/// Bytes that a name in this folder may have.
std::size_t MostNameBytes(const char* folder);
