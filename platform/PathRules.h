#pragma once

/// How paths are written on this system, and what stands around the name of a library.
#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
inline constexpr char kLibraryPrefix[] = "";
inline constexpr char kLibrarySuffix[] = ".dll";
#else
inline constexpr char kPathSeparator = '/';
inline constexpr char kLibraryPrefix[] = "lib";
inline constexpr char kLibrarySuffix[] = ".so";
#endif

/// Both separators part a path into components, on every system. `character` is one: a byte inside
/// a longer character is not asked (see platform/CodePage.h).
inline constexpr bool IsPathSeparator(char character) {
    return character == '/' || character == '\\';
}
