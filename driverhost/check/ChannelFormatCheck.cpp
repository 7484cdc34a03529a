#include "driverhost/check/ChannelFormatCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>

#include "driverhost/ChannelFile.h"

namespace {

/// The extension of a name pattern in small letters, with its dot; "" without one.
std::string ExtensionOf(const std::string& pattern) {
    const std::size_t dot = pattern.rfind('.');
    return dot == std::string::npos ? "" : Folded(pattern.substr(dot));
}

bool IsTiff(const std::string& extension) {
    return IsTiffName("channel" + extension);
}

const char* FormatOf(const std::string& extension) {
    return IsTiff(extension) ? "TIFF" : "raw lines";
}

/// The extension that most colours have, of those with a name; "" when no one has the most.
std::string MostCommon(const std::map<std::string, int32_t>& counts) {
    std::string common;
    int32_t most = 0;
    for (const auto& [extension, count] : counts) {
        if (count == most) common.clear();
        if (count <= most) continue;
        common = extension;
        most = count;
    }
    return common;
}

/// The extension of other colours that this one was probably meant to be; "" for none. Where none
/// is the common one, only a misspelt TIFF can be told.
std::string MeantExtension(const std::string& extension, const std::string& common,
                           const std::map<std::string, int32_t>& counts) {
    constexpr std::size_t kLeastBytes = 3;  // ".c" beside ".m" is no slip
    if (IsTiff(extension) || extension.size() < kLeastBytes) return "";
    std::vector<std::string_view> candidates;
    if (!common.empty()) candidates.emplace_back(common);
    for (const auto& [known, count] : counts)
        if (common.empty() && IsTiff(known)) candidates.emplace_back(known);
    return std::string(NearestName(extension, candidates));
}

}  // namespace

void CheckChannelFormats(const CheckedDocument& document, const DescriptionFacts& facts) {
    std::map<std::string, int32_t> counts;
    for (const DescribedColor& color : facts.Colors)
        if (!color.ChannelName.empty()) ++counts[ExtensionOf(color.ChannelName)];
    const std::string common = MostCommon(counts);
    for (std::size_t color = 0; color < facts.Colors.size(); ++color) {
        const std::string& name = facts.Colors[color].ChannelName;
        const std::string extension = ExtensionOf(name);
        if (name.empty() || extension == common) continue;
        const pugi::xml_node at = ChildElement(facts.ColorNodes[color], "ChannelName");
        const std::string text =
            fmt::format("ChannelName {} makes a file of {}", Quoted(name), FormatOf(extension));
        const std::string meant = MeantExtension(extension, common, counts);
        if (!meant.empty())
            document.Error(
                at, fmt::format("{}; did you mean {}, which others have?", text, Quoted(meant)));
        else if (!common.empty() && IsTiff(extension) != IsTiff(common))
            document.Warning(at, fmt::format("{}, where {} makes one of {}", text, Quoted(common),
                                             FormatOf(common)));
    }
}
