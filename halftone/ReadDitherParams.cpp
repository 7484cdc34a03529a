#include "halftone/ReadDitherParams.h"

#include <algorithm>
#include <array>

#include "halftone/HalftoneFiles.h"
#include "host/Numbers.h"
#include "host/Text.h"
#include "host/XMLChildren.h"

namespace {

constexpr int32_t kMostLevels = DitherParams::kMostLevels;
constexpr int32_t kMostInks = DitherParams::kMostInks;

/// A level count that no printer has; a file that knows none for it is not at fault.
constexpr int32_t kContoneLevels = 256;

// Numbers of a record are passed on as copies: it is packed, and references to them may not be.

/// Positions that a level count uses: one for each level with ink.
int32_t PositionCount(int32_t levelCount) {
    return std::clamp(levelCount, 1, kMostLevels) - 1;
}

struct Weight {
    int32_t Ink = 0;
    int32_t Position = 0;
    float Value = 0;
};

/// Nothing when a number is missing or outside the record.
std::optional<Weight> ReadWeight(const AXMLTree& document, const AXMLTreeNode& node) {
    const AString inkText = document.getAttribute(node, "ColorInk");
    const std::optional<int32_t> ink =
        EqualsIgnoringCase(inkText, kDefaultEntryID) ? 0 : LeadingDecimal(inkText);
    const std::optional<int32_t> position = LeadingDecimal(document.getAttribute(node, "Level"));
    const std::optional<float> value = LeadingFraction(document.getAttribute(node, "Value"));
    if (!ink || !position || !value) return std::nullopt;
    if (*ink < 0 || *ink >= kMostInks || *position < 0 || *position >= kMostLevels) {
        return std::nullopt;
    }
    return Weight{*ink, *position, *value};
}

void ReadWeights(const AXMLTree& document, const AXMLTreeNode& level, DitherParams& out) {
    std::array<bool, kMostInks> seen = {};
    std::optional<std::size_t> first;
    VisitChildren(document, level, [&](const AXMLTreeNode& child, int32_t) {
        if (document.getName(child) != "Weight") return true;
        const std::optional<Weight> weight = ReadWeight(document, child);
        if (!weight) return true;
        const auto ink = static_cast<std::size_t>(weight->Ink);
        seen[ink] = true;
        if (!first) first = ink;
        out.Values[ink][weight->Position] = weight->Value;
        return true;
    });

    const int64_t complete = (int64_t{out.LevelCount} - 1) * out.InkCount;
    if (!first || document.getChildCount(level) >= complete) return;
    // Inks that the file leaves out print like the first one that it has.
    const auto inkCount = static_cast<std::size_t>(std::clamp(int32_t{out.InkCount}, 0, kMostInks));
    for (std::size_t ink = 0; ink < inkCount; ++ink) {
        for (int32_t at = 0; !seen[ink] && at < PositionCount(out.LevelCount); ++at) {
            out.Values[ink][at] = out.Values[*first][at];
        }
    }
}

/// The attribute `Value` of a child that must be there.
std::optional<AString> ChildValue(const AXMLTree& document, const AXMLTreeNode& parent,
                                  const char* name, const char* message, HalftoneReading& reading) {
    AXMLTreeNode child;
    if (document.getChild(name, parent, child) != 0) return document.getAttribute(child, "Value");
    reading.Message = message;
    return std::nullopt;
}

/// 1 when the entry had everything.
int32_t ReadEntry(const AXMLTree& document, const AXMLTreeNode& entry, DitherParams& out,
                  HalftoneReading& reading) {
    AXMLTreeNode level;
    if (document.getChild("Level", entry, level) == 0) {
        reading.Message = "Getting ditherparams-level node fails";
        return 0;
    }
    if (LeadingDecimal(document.getAttribute(level, "Value")) != int32_t{out.LevelCount}) return 0;
    ReadWeights(document, level, out);

    const std::optional<AString> antiClog =
        ChildValue(document, entry, "AntiClogLevel",
                   "Getting ditherparams-anti clog level node fails", reading);
    if (!antiClog) return 0;
    out.AntiClogLevel = LeadingDecimal(*antiClog).value_or(int32_t{out.AntiClogLevel});

    const std::optional<AString> noise = ChildValue(
        document, entry, "NoiseLevel", "Getting ditherparams-noise level node fails", reading);
    if (!noise) return 0;
    out.NoiseLevel = LeadingFraction(*noise).value_or(float{out.NoiseLevel});
    return 1;
}

}  // namespace

bool SetDefaultDitherParams(const ColorantInfoList& colorants, DitherParams& out) {
    const uint32_t depth = colorants.Count > 0 ? colorants.Items[0].ColorDepth : 1;
    constexpr uint32_t kMostBits = 6;  // of which kMostLevels is the power
    out.LevelCount = 1 << std::min(depth, kMostBits);
    out.AntiClogLevel = 0;
    out.NoiseLevel = 1.0F;
    out.InkCount = std::clamp(int32_t{colorants.Count}, 0, kMostInks);
    const auto highest = static_cast<float>(out.LevelCount - 1);
    for (int32_t ink = 0; ink < out.InkCount; ++ink) {
        for (int32_t position = 0; position < PositionCount(out.LevelCount); ++position) {
            out.Values[ink][position] = static_cast<float>(position + 1) / highest;
        }
    }
    return depth != 8 && depth != 16;
}

HalftoneReading ReadDitherParams(std::string_view modelName, std::string_view manufacturer,
                                 const PrintSettings& settings, DitherParams& out) {
    HalftoneReading reading;
    HalftoneFiles files(kDitherListFile);
    reading.File = files.LocateHalftoneFile(modelName, manufacturer);
    const AXMLTree* const document = files.LoadParameterFile(reading.File);
    if (document == nullptr) return reading;
    const std::optional<AXMLTreeNode> colorMode = FindColorModeNode(*document, settings, reading);
    if (!colorMode) return reading;
    const int32_t levelCount = out.LevelCount;
    const char* const message =
        levelCount == kContoneLevels ? nullptr : "Getting ditherparams node fails";
    const std::optional<AXMLTreeNode> entry =
        TakeHalftoneEntry(*document, *colorMode, "DitherParams", levelCount, message, reading);
    if (entry) reading.Answer = ReadEntry(*document, *entry, out, reading);
    return reading;
}
