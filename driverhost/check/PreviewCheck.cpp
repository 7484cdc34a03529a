#include "driverhost/check/PreviewCheck.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/Numbers.h"
#include "host/Text.h"
#include "plugin/output/PagePreview.h"
#include "plugin/output/PreviewLimits.h"

namespace {

/// The number in an attribute as the driver reads it over what stands in `value`.
void ReadNumber(const CheckedDocument& document, const pugi::xml_node& preview,
                const char* attribute, int32_t& value) {
    const std::string text = preview.attribute(attribute).value();
    if (text.empty()) return;
    value = Atoi(text);
    if (document.Number(preview, attribute)) return;
    document.Warning(preview, attribute,
                     fmt::format("{} {} is no number; {} is read", attribute, Quoted(text), value));
}

void CheckSize(const CheckedDocument& document, const pugi::xml_node& preview) {
    ModelOutputSettings model;
    ReadNumber(document, preview, "sizeH", model.PreviewSizeH);
    ReadNumber(document, preview, "sizeV", model.PreviewSizeV);
    ReadNumber(document, preview, "bestFit", model.PreviewBestFit);
    const std::string limits =
        fmt::format("a side in use must be 1 to {} pixels, and there may be {} pixels",
                    kLongestPreviewSide, kMostPreviewPixels);
    const int32_t width = model.PreviewSizeV;
    if (!HasPreviewSides(model)) {
        document.Error(preview, "no preview is made: " + limits);
    } else if (model.PreviewBestFit == 0) {
        if (!IsPreviewSize(width, model.PreviewSizeH))
            document.Error(preview, "no preview is made: " + limits);
    } else if (!IsPreviewSize(width, width)) {
        document.Error(
            preview, "sizeV",
            fmt::format("no preview is made of a page whose longer side is less than "
                        "{:.1f} times the shorter one: {}",
                        static_cast<double>(width) * width / kMostPreviewPixels, limits));
    }
}

bool EndsWith(std::string_view name, std::string_view ending) {
    return name.size() >= ending.size() &&
           EqualsIgnoringCase(name.substr(name.size() - ending.size()), ending);
}

}  // namespace

std::string CheckPreview(const CheckedDocument& document, const pugi::xml_node& entry) {
    const pugi::xml_node preview = ChildElement(entry, "PreviewParam");
    document.CheckNames(preview, {{}, {"type", "sizeH", "sizeV", "bestFit", "name"}, false, false});
    const std::string type = preview.attribute("type").value();
    const bool isPng = type == "PNG";
    if (!isPng && !type.empty() && type != "BMP")
        document.Warning(
            preview, "type",
            fmt::format("type {} counts as BMP{}", Quoted(type), DidYouMean(type, {"PNG", "BMP"})));
    CheckSize(document, preview);
    std::string name = preview.attribute("name").value();
    if (name.empty()) {
        name = PreviewFileName({}, "");
        if (isPng)
            document.Warning(preview,
                             fmt::format("no name: the PNG preview is named {}", Quoted(name)));
    } else if (EndsWith(name, isPng ? ".bmp" : ".png")) {
        document.Warning(preview, "name",
                         fmt::format("name {} does not say that the preview is a {}", Quoted(name),
                                     isPng ? "PNG" : "BMP"));
    }
    return name;
}
