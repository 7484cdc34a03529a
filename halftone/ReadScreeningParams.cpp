#include "halftone/ReadScreeningParams.h"

#include "halftone/HalftoneFiles.h"
#include "host/Numbers.h"
#include "host/Text.h"
#include "host/XMLChildren.h"

namespace {

constexpr std::size_t kDefaultShape = 2;
constexpr float kDefaultFrequency = 55.0F;

struct DefaultScreen {
    const char* ColorName;
    float Angle;
};
constexpr DefaultScreen kDefaultScreens[] = {
    {"Cyan", 105}, {"Magenta", 75},   {"Yellow", 90},  {"Black", 45},
    {"LCyan", 75}, {"LMagenta", 105}, {"Orange", 105}, {"Green", 75},
};

void ReadItems(const AXMLTree& document, const AXMLTreeNode& colorMode, ScreeningParams& out) {
    int32_t count = 0;
    VisitChildren(document, colorMode, [&](const AXMLTreeNode& item, int32_t) {
        if (document.getName(item) != "Item") return true;
        const AString colorName = document.getAttribute(item, "ColorName");
        if (colorName.empty()) return true;
        if (count == ScreeningParams::kMostEntries) return false;
        ScreenEntry& entry = out.Entries[count];
        if (const auto angle = LeadingFraction(document.getAttribute(item, "Angle"))) {
            entry.Angle = *angle;
        }
        if (const auto frequency = LeadingFraction(document.getAttribute(item, "Frequency"))) {
            entry.Frequency = *frequency;
        }
        CopyText(entry.ColorName, sizeof entry.ColorName, colorName);
        CopyText(entry.ShapeName, sizeof entry.ShapeName, document.getAttribute(item, "ShapeName"));
        out.Count = ++count;
        return true;
    });
}

}  // namespace

void SetDefaultScreeningParams(ScreeningParams& out) {
    out.Count = 0;
    for (const DefaultScreen& screen : kDefaultScreens) {
        ScreenEntry& entry = out.Entries[out.Count++];
        CopyText(entry.ShapeName, sizeof entry.ShapeName, kShapeNames[kDefaultShape]);
        entry.Frequency = kDefaultFrequency;
        entry.Angle = screen.Angle;
        CopyText(entry.ColorName, sizeof entry.ColorName, screen.ColorName);
    }
}

HalftoneReading ReadScreeningParams(std::string_view modelName, std::string_view manufacturer,
                                    const PrintSettings& settings, ScreeningParams& out) {
    HalftoneReading reading;
    HalftoneFiles files(kScreeningListFile);
    reading.File = files.LocateHalftoneFile(modelName, manufacturer);
    const AXMLTree* const document = files.LoadParameterFile(reading.File);
    if (document == nullptr) return reading;
    const std::optional<AXMLTreeNode> colorMode = FindColorModeNode(*document, settings, reading);
    if (!colorMode) return reading;
    ReadItems(*document, *colorMode, out);
    reading.Answer = 1;
    return reading;
}
