#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "driverhost/ChannelFile.h"
#include "driverhost/PrintRecord.h"

/// One channel of a printed page: its ink and its file.
struct PageChannel {
    std::string Ink;          ///< the colorant's internal name
    uint32_t ColorValue = 0;  ///< display colour, 0x00BBGGRR
    std::unique_ptr<ChannelFile> File;
};

struct PageChannels {
    std::vector<PageChannel> Channels;  ///< the colour mode's colorants, then white if printed
    bool HasWhite = false;              ///< an ink named White is among them
    bool BottomLineFirst = false;
};

/// Opens the channel files of page `page` (from 0) of a record, by the names that the model's
/// description gives its channels. Throws HostError for a model that cannot be read and for
/// channels that are missing or not alike.
PageChannels OpenPageChannels(const std::filesystem::path& folder, const PrintRecord& record,
                              std::size_t page);
