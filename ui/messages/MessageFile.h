#pragma once

#include <string>

/// The file that QL_MESSAGE_FILE names receives messages and dialog reports instead of the
/// screen, for automation and tests.

/// Whether QL_MESSAGE_FILE is set.
bool HasMessageFile();

/// Appends `json` as one line. Failures are ignored: there is nowhere left to report them.
void AppendToMessageFile(const std::string& json);
