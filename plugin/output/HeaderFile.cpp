#include "plugin/output/HeaderFile.h"

#include <algorithm>
#include <optional>
#include <string>

#include "host/FileBytes.h"

namespace {

constexpr const char* kSource = "plugin\\output\\HeaderFile";

/// How the last line of a template that was read went.
class LastLine final : public HeaderLineListener {
  public:
    void OnLine(const HeaderLine& line) override { Result = line.Result; }
    HeaderLineResult Result = HeaderLineResult::kEmpty;
};

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

bool GivesHeader(const AFilePath& headerTemplate, const std::vector<HeaderKeyword>& keywords) {
    const std::optional<std::string> text = ReadFileText(headerTemplate);
    if (!text) return false;
    HeaderBuffer buffer;
    try {
        return ProcessHeaderTemplate(*text, keywords, buffer) != 0;
    } catch (int) {  // malformed
        return false;
    }
}

void WriteHeaderFile(JobReport& report, WriterId writer, const AFilePath& headerTemplate,
                     const AFilePath& header, const std::vector<HeaderKeyword>& keywords) {
    int reason = 0;
    const std::optional<std::string> text = ReadFileText(headerTemplate, kMostTextBytes, &reason);
    if (!text) {
        report.Note(Doubt::kSideFile, {kSource, __LINE__}, "the header template cannot be read",
                    headerTemplate.shownName(), reason);
        return;
    }
    HeaderBuffer buffer;
    LastLine last;
    std::size_t count = 0;
    try {
        count = static_cast<std::size_t>(ProcessHeaderTemplate(*text, keywords, buffer, &last));
    } catch (int) {
        report.Fail({kSource, __LINE__}, "a char field of the header template begins with ']'",
                    headerTemplate.shownName());
        throw;
    }
    if (count == 0) return;
    const std::string_view bytes(reinterpret_cast<const char*>(buffer.data()), count);
    const WriteOutcome written = ReplaceFileBytes(header, bytes, writer);
    if (!written)
        report.Note(Doubt::kSideFile, {kSource, __LINE__}, "the header cannot be written",
                    header.shownName(), written.SystemError);
    if (last.Result == HeaderLineResult::kDoesNotFit)
        report.Note(Doubt::kSideFile, {kSource, __LINE__},
                    "the header lacks the fields beyond its 2000 bytes", header.shownName());
}
