#pragma once

#include <string>

/// Text in the host's code page.
using AString = std::string;
