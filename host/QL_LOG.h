#pragma once

#include <string_view>

/// Appends one line "LEVEL FILE(LINE): MESSAGE" to the file that QL_LOG_FILE names, else to
/// standard error. `file` is the source file's project path without extension, its parts
/// separated by '\'; `level` is 'E' for errors. Never fails visibly.
void QL_LOG(const char* file, int line, char level, std::string_view message);
