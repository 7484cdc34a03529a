#pragma once

#include <string>

/// Whether two folders lie on one volume and so share its free space; false when the system cannot
/// tell.
bool IsSameVolume(const std::string& left, const std::string& right);
