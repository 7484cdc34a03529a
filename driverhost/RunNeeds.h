#pragma once

#include <cstdint>
#include <filesystem>

#include "driverhost/PrintPlan.h"

// What a job needs before its first line. Each of these throws HostError, and names what is
// missing.

/// File names that the file system takes.
void RequireNames(const std::filesystem::path& folder, const PrintPlan& plan);

/// A name that is left for the job's own folder, where the model asks for one: the driver tries a
/// thousand, and writes into the last when all are taken.
void RequireJobFolder(const std::filesystem::path& folder, const PrintPlan& plan);

/// The base folder's Temp, where a page is gathered that is written bottom line first, and the
/// union that white ink is made of: there, and to be written in.
void RequireTempFolder(const PrintPlan& plan);

/// Room for all files of the job on the output folder's volume, and for what is gathered of a page
/// on that of Temp. `givenBack` bytes of the output folder will be free. Volumes that do not say
/// what is free are not asked further.
void RequireDiskSpace(const std::filesystem::path& folder, const PrintPlan& plan,
                      std::uintmax_t givenBack);
