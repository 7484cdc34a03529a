#pragma once

/// Marks a function that leaves the library under its own name.
#ifdef _WIN32
#define PLATFORM_EXPORT __declspec(dllexport)
#else
#define PLATFORM_EXPORT __attribute__((visibility("default")))
#endif
