#pragma once

/// How paths are written on this system.
#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
#else
inline constexpr char kPathSeparator = '/';
#endif

/// Both separators part a path into components, on every system.
inline constexpr bool IsPathSeparator(char character) {
    return character == '/' || character == '\\';
}
