#include "plugin/output/PageFolder.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "host/Text.h"
#include "platform/win32.h"

namespace {

constexpr int kLastSuffix = 1000;
constexpr int32_t kFewestTiles = 2;

/// A suffix goes to the name's last component.
std::string_view WithoutSeparatorsBehind(std::string_view name) {
    while (!name.empty() && (FindLastCharacter(name, '/') == name.size() - 1 ||
                             FindLastCharacter(name, '\\') == name.size() - 1))
        name.remove_suffix(1);
    return name;
}

bool Create(const AFilePath& folder) {
    return folder.isValid() && CreateDirectoryA(folder.fullPath().c_str(), nullptr) != FALSE;
}

}  // namespace

bool PageFolder::SetUp(const AString& folderText, const AString& jobName, bool createFolder) {
    inTile_ = false;
    const AFilePath parent =
        folderText.empty() ? AFilePath().Append("temp") : AFilePath(folderText);
    path_ = parent;
    if (!createFolder) return true;
    path_.Append(jobName);
    if (!path_.exists()) return Create(path_);
    const std::string_view stem = WithoutSeparatorsBehind(jobName);
    for (int k = 1; k <= kLastSuffix; ++k) {
        path_ = AFilePath(parent).Append(fmt::format("{}_{:03d}", stem, k));
        if (!path_.exists()) return Create(path_);
    }
    return true;
}

void PageFolder::EnterTile(const JobStatusRecord& status, int32_t pageIndex,
                           const AString& jobName) {
    if (status.RecordVersion < JobStatusRecord::kTileRecordVersion) return;
    if (status.TileCount < kFewestTiles) return;
    const int32_t tile = std::min(pageIndex, status.TileCount - 1);
    pathBeforeTile_ = path_;
    inTile_ = true;
    path_.Append(fmt::format("{}-tile{}", jobName, tile + 1));
}

bool PageFolder::MakeTile() const {
    return !inTile_ || Create(path_);
}

void PageFolder::LeaveTile() {
    if (!inTile_) return;
    path_ = pathBeforeTile_;
    inTile_ = false;
}
