#include "plugin/output/DiskSpace.h"

#include <algorithm>
#include <limits>

#include "platform/win32.h"

namespace {

constexpr uint64_t kSpareBytes = 0x100000;

}  // namespace

uint64_t RequiredPageBytes(int32_t heightLines, int32_t channelCount, int32_t lineBytes) {
    const auto height = static_cast<uint64_t>(std::max(heightLines, 0));
    const auto channels = static_cast<uint64_t>(std::max(channelCount, 0));
    const uint64_t planeBytes = height * static_cast<uint64_t>(std::max(lineBytes, 0));
    constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max() - kSpareBytes;
    if (channels != 0 && planeBytes > kMost / channels) return kMost + kSpareBytes;
    return planeBytes * channels + kSpareBytes;
}

bool HasDiskSpace(const AFilePath& folder, uint64_t requiredBytes) {
    const AString parent = folder.folderPart();
    ULARGE_INTEGER free = {};
    const BOOL known =
        GetDiskFreeSpaceExA(parent.empty() ? "." : parent.c_str(), &free, nullptr, nullptr);
    return known == FALSE || free.QuadPart >= requiredBytes;
}
