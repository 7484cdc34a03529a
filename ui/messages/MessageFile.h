#pragma once

#include <string>
#include <string_view>

/// The file that QL_MESSAGE_FILE names receives messages and dialog reports instead of the
/// screen, for automation and tests.

/// Whether QL_MESSAGE_FILE is set.
bool HasMessageFile();

/// Appends `json` as one line. False when the file does not take it.
bool AppendToMessageFile(const std::string& json);

/// A text in the code page as a JSON string, quotes included. Objects are put together from such:
/// the library's own need memory to be destroyed, and end the process where there is none.
std::string JsonText(std::string_view text);
