#pragma once

#include <cstdint>

#include "host/AFilePath.h"

/// Bytes that a page's channel files need, with some room to spare. Saturates.
uint64_t RequiredPageBytes(int32_t heightLines, int32_t channelCount, int32_t lineBytes);

/// Whether the volume that holds `folder` has `requiredBytes` free for the caller; true when it
/// cannot tell.
bool HasDiskSpace(const AFilePath& folder, uint64_t requiredBytes);
