#pragma once

#include <string_view>

/// Appends one line "LEVEL FILE(LINE): MESSAGE" to the file that QL_LOG_FILE names, else, or when
/// that cannot be opened, to standard error. `file` is the source file's project path without
/// extension, its parts separated by '\'; `level` is 'E' for errors, 'W' for warnings. A line end
/// in the message is written as "\n" or "\r". Never fails visibly, and allocates nothing, so that
/// an entry is written when memory is gone, too.
void QL_LOG(const char* file, int line, char level, std::string_view message) noexcept;
