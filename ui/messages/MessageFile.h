#pragma once

#include <string>

/// The file that QL_MESSAGE_FILE names receives messages and dialog reports instead of the
/// screen, for automation and tests.

/// Whether QL_MESSAGE_FILE is set.
bool HasMessageFile();

/// Appends `json` as one line. False when the file does not take it.
bool AppendToMessageFile(const std::string& json);
