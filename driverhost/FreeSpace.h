#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

/// Room on disks.

/// Bytes that this user can still write where `path` lies; nothing when the system does not tell.
std::optional<int64_t> FreeBytes(const std::filesystem::path& path);

/// Whether the disk where `path` lies has no room for more than a few blocks, which some file
/// systems keep to themselves.
bool IsDiskFull(const std::filesystem::path& path);

/// Why a file could not be written: "cannot write PATH: the disk is full", or without a reason.
std::string WriteFailure(const std::filesystem::path& path);

/// A size as a person reads it: "1.2 kB", "3.4 MB", "5.6 GB", "7.8 TB".
std::string SizeText(int64_t bytes);
