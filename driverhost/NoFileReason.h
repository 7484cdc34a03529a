#pragma once

#include <string>

#include "host/AFilePath.h"

/// Why the driver cannot read a file of that path; "" when it is a file.
std::string NoFileReason(const AFilePath& path);
