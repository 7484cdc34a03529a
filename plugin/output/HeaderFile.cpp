#include "plugin/output/HeaderFile.h"

#include <algorithm>
#include <optional>
#include <string>

#include "host/FileBytes.h"

namespace {

/// The model's code for the effective white type; 0 without one.
int32_t WhiteHeaderCode(const ModelOutputSettings& model) {
    const int32_t type = model.EffectiveWhiteType();
    const auto& codes = model.WhiteTypeCodes;
    const auto found = std::find(codes.begin(), codes.end(), type);
    const auto position = static_cast<std::size_t>(found - codes.begin());
    const bool hasCode =
        type >= 0 && position < model.WhiteHeaderCodes.size() && found != codes.end();
    return hasCode ? model.WhiteHeaderCodes[position] : 0;
}

}  // namespace

std::vector<HeaderKeyword> HeaderKeywords(const HeaderFacts& facts,
                                          const ModelOutputSettings& model) {
    const int32_t white = model.EffectiveWhiteType() >= 0 ? 1 : 0;
    return {
        {"QL_WIDTH", facts.widthPixels},
        {"QL_HEIGHT", facts.heightLines},
        {"QL_NCOLORS", facts.channelCount + white},
        {"QL_HEIGHTDPI", facts.yResolution},
        {"QL_WIDTHDPI", facts.xResolution},
        {"QL_TYPE_WHITE_MODE", WhiteHeaderCode(model)},
        {"QL_USE_VARIABLE", facts.bits != 1 ? 1 : 0},
    };
}

AFilePath HeaderTemplatePath(const ModelOutputSettings& model) {
    return AFilePath()
        .Append("OutputDrivers")
        .Append("HeaderTemplates")
        .Append(model.HeaderTemplateName);
}

void WriteHeaderFile(const AFilePath& headerTemplate, const AFilePath& header,
                     const std::vector<HeaderKeyword>& keywords) {
    const std::optional<std::string> text = ReadFileText(headerTemplate);
    if (!text) return;
    HeaderBuffer buffer;
    const auto count = static_cast<std::size_t>(ProcessHeaderTemplate(*text, keywords, buffer));
    // An optional output: a header that cannot be written is not the page's failure.
    if (count != 0)
        ReplaceFileBytes(header, std::string(reinterpret_cast<const char*>(buffer.data()), count));
}
