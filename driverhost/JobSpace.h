#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/Artwork.h"
#include "driverhost/Capabilities.h"
#include "driverhost/PageLayout.h"

/// Bytes on disk that a job takes, at most: as if nothing of it could be packed.
struct JobSpace {
    int64_t Job = 0;       ///< the job itself
    int64_t Making = 0;    ///< at one time while it is made, the job included
    int64_t Channels = 0;  ///< the channel files that are printed from it
};

/// `bandPixels` are those of one run of the rasteriser.
JobSpace SpaceOf(const Artwork& artwork, const std::vector<DocumentPage>& pages,
                 const ColorMode& mode, int64_t bandPixels);

/// Throws HostError when `folder` has no room for so many bytes more, as far as its system tells.
/// `what` says what would take them.
void ExpectRoom(const std::filesystem::path& folder, int64_t bytes, const std::string& what);
