#include "driverhost/check/FileNamesCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "host/AFilePath.h"
#include "platform/CodePage.h"
#include "platform/PathRules.h"
#include "plugin/output/OutputNames.h"

namespace {

// Names are made for a job that is itself named by the place of the job's name, so that they read
// as the patterns that they came from.
constexpr const char* kJobName = "filename";

/// A pattern at its place in the file.
struct Pattern {
    pugi::xml_node At;
    const char* Attribute;  ///< null: the element's text
    std::string What;
    std::string Text;
    bool IsTicket = false;  ///< whose name is used as it stands
};

class NamesCheck {
  public:
    NamesCheck(const CheckedDocument& document, const DescriptionFacts& facts,
               const std::vector<SideFiles>& models)
        : document_(document), facts_(facts), models_(models) {}

    void Check() {
        CheckPatterns();
        for (const DescribedColorMode& mode : facts_.ColorModes)
            CheckMode(mode);
        for (const SideFiles& model : models_) {
            CheckSideFiles(model);
            CheckWhite(model);
        }
        CheckUse();
    }

  private:
    void CheckPatterns();
    void CheckPattern(const Pattern& pattern, bool sharesFolder);
    void CheckMode(const DescribedColorMode& mode);
    void CheckSideFiles(const SideFiles& model);
    void CheckWhite(const SideFiles& model);
    void CheckUse();
    AStringArray Patterns(const DescribedColorMode& mode) const;
    AStringArray ChannelFiles(const DescribedColorMode& mode) const;
    std::set<std::string> WhiteFiles(const SideFiles& model) const;
    void Warn(const Pattern& pattern, std::string text) const {
        if (pattern.Attribute == nullptr) {
            document_.Warning(pattern.At, std::move(text));
        } else {
            document_.Warning(pattern.At, pattern.Attribute, std::move(text));
        }
    }

    const CheckedDocument& document_;
    const DescriptionFacts& facts_;
    const std::vector<SideFiles>& models_;
    std::map<std::string, std::string> channelFiles_;  ///< folded, and the first mode with each
};

void NamesCheck::CheckPatterns() {
    const bool sharesFolder = std::any_of(
        models_.begin(), models_.end(), [](const SideFiles& model) { return !model.CreateFolder; });
    for (std::size_t color = 0; color < facts_.Colors.size(); ++color) {
        const pugi::xml_node& item = facts_.ColorNodes[color];
        const pugi::xml_node name = ChildElement(item, "ChannelName");
        const std::string& text = facts_.Colors[color].ChannelName;
        if (text.empty()) {
            document_.Warning(name ? name : item,
                              "the colour has no ChannelName: its file is named after the job");
            continue;
        }
        CheckPattern({name, nullptr, "ChannelName", text}, sharesFolder);
    }
    for (const SideFiles& model : models_) {
        const pugi::xml_node header = ChildElement(model.Entry, "HeaderParam");
        const pugi::xml_node preview = ChildElement(model.Entry, "PreviewParam");
        const pugi::xml_node ticket = ChildElement(model.Entry, "JobTicketParam");
        // A template's name that leads nowhere is reported with the template.
        if (ticket && AFilePath("f").Append(Utf8ToAnsi(model.Ticket)).isValid()) {
            CheckPattern({ticket, "name", "name", model.Ticket, true}, !model.CreateFolder);
        }
        if (!model.Header.empty()) {
            CheckPattern({header, "output", "output", model.Header}, !model.CreateFolder);
        }
        if (*preview.attribute("name").value() != '\0' || !model.CreateFolder) {
            CheckPattern({preview ? preview : model.Entry, "name", "name", model.Preview},
                         !model.CreateFolder);
        }
    }
}

void NamesCheck::CheckPattern(const Pattern& pattern, bool sharesFolder) {
    const std::string& text = pattern.Text;
    const std::string name = SubstituteJobName(text, "j");
    const std::string quoted = Quoted(text);
    const bool hasSeparator = std::any_of(name.begin(), name.end(), IsPathSeparator);
    if (!AFilePath("f").Append(Utf8ToAnsi(name)).isValid() || hasSeparator) {
        const std::string reason =
            fmt::format("{} {} names a place in another folder, which the driver does not make",
                        pattern.What, quoted);
        if (pattern.Attribute == nullptr) {
            document_.Error(pattern.At, reason);
        } else {
            document_.Error(pattern.At, pattern.Attribute, reason);
        }
        return;
    }
    if (text.find_first_of(" \t\r\n") == 0 || text.find_last_of(" \t\r\n") == text.size() - 1) {
        Warn(pattern, fmt::format("the blanks around {} belong to the file's name", quoted));
    }
    const std::size_t place = pattern.IsTicket ? std::string::npos : text.find(kJobName);
    if (place == std::string::npos) {
        if (Folded(text).find(kJobName) != std::string::npos) {
            Warn(pattern, fmt::format("{} holds no job name: only \"filename\" in small letters is "
                                      "replaced, and in a ticket's name nothing",
                                      quoted));
        } else if (sharesFolder) {
            Warn(pattern, fmt::format("{} holds no job name: each job replaces the file of the one "
                                      "before",
                                      quoted));
        }
    } else if (text.find(kJobName, place + 1) != std::string::npos) {
        Warn(pattern, fmt::format("only the first \"filename\" of {} is replaced", quoted));
    }
}

AStringArray NamesCheck::Patterns(const DescribedColorMode& mode) const {
    AStringArray patterns;
    for (const int32_t color : mode.Colors)
        patterns.push_back(facts_.Colors[static_cast<std::size_t>(color)].ChannelName);
    return patterns;
}

/// The files of a mode's channels that hold data, by channel.
AStringArray NamesCheck::ChannelFiles(const DescribedColorMode& mode) const {
    if (mode.Colors.size() == 1) return {kJobName};
    const auto count = static_cast<int32_t>(mode.Colors.size());
    const ChannelNaming naming(Patterns(mode), count, kJobName);
    AStringArray files;
    for (int32_t channel = 0; channel < count; ++channel)
        files.push_back(naming.FileName(channel));
    return files;
}

void NamesCheck::CheckMode(const DescribedColorMode& mode) {
    const AStringArray channels = ChannelFiles(mode);
    std::map<std::string, std::size_t> files;
    std::map<std::string, std::size_t> inks;
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        const auto color = static_cast<std::size_t>(mode.Colors[channel]);
        const auto [file, isNewFile] = files.emplace(Folded(channels[channel]), channel);
        if (!isNewFile) {
            document_.Error(mode.Node,
                            fmt::format("channels {} and {} of {} share the file {}: the later "
                                        "replaces the earlier",
                                        file->second + 1, channel + 1, Quoted(mode.Name),
                                        Quoted(channels[channel])));
        }
        const auto [ink, isNewInk] =
            inks.emplace(Folded(facts_.Colors[color].InternalName), channel);
        if (isNewInk) continue;
        document_.Error(mode.Node,
                        fmt::format("channels {} and {} of {} are both {}: a separation of that "
                                    "name goes to the first, and the second stays blank",
                                    ink->second + 1, channel + 1, Quoted(mode.Name),
                                    Quoted(facts_.Colors[color].InternalName)));
    }
    for (const AString& channel : channels)
        channelFiles_.emplace(Folded(channel), mode.Name);
    // An only channel without data is named by its pattern.
    if (channels.size() == 1)
        channelFiles_.emplace(Folded(ChannelNaming(Patterns(mode), 1, kJobName).FileName(0)),
                              mode.Name);
}

/// The files that the model's white ink can have: of two colours named White some treatments take
/// the first one's pattern, some the last one's.
std::set<std::string> NamesCheck::WhiteFiles(const SideFiles& model) const {
    std::set<std::string> files;
    const bool writesWhite = std::any_of(model.WhiteTypes.begin(), model.WhiteTypes.end(),
                                         [](int32_t type) { return type > 0; });
    for (const DescribedColor& color : facts_.Colors)
        if (writesWhite && color.InternalName == "White" && !color.ChannelName.empty())
            files.insert(SubstituteJobName(color.ChannelName, kJobName));
    return files;
}

/// The files beside the channels, which must not be one another's nor a channel's.
void NamesCheck::CheckSideFiles(const SideFiles& model) {
    std::vector<std::pair<const char*, std::string>> writers = {
        {"the job ticket", model.Ticket},
        {"the header", SubstituteJobName(model.Header, kJobName)},
        {"the preview", SubstituteJobName(model.Preview, kJobName)},
    };
    for (const std::string& white : WhiteFiles(model))
        writers.emplace_back("the white ink", white);
    std::map<std::string, const char*> met;
    for (const auto& [writer, file] : writers) {
        if (file.empty()) continue;
        const auto channel = channelFiles_.find(Folded(file));
        if (channel != channelFiles_.end()) {
            document_.Error(model.Entry,
                            fmt::format("{} and a channel of {} share the file {}", writer,
                                        Quoted(channel->second), Quoted(file)));
        }
        const auto [earlier, isFirst] = met.emplace(Folded(file), writer);
        if (isFirst) continue;
        document_.Error(model.Entry, fmt::format("{} and {} share the file {}", earlier->second,
                                                 writer, Quoted(file)));
    }
}

/// The white channel's name, where the model writes one.
void NamesCheck::CheckWhite(const SideFiles& model) {
    const bool writesWhite = std::any_of(model.WhiteTypes.begin(), model.WhiteTypes.end(),
                                         [](int32_t type) { return type > 0; });
    if (!writesWhite || !WhiteFiles(model).empty()) return;
    document_.Warning(model.Entry, "SupportWhite",
                      "no colour with the InternalName \"White\" and a ChannelName: the white "
                      "file is named after the job");
}

/// Colours that nothing prints.
void NamesCheck::CheckUse() {
    std::set<int32_t> used;
    for (const DescribedColorMode& mode : facts_.ColorModes)
        used.insert(mode.Colors.begin(), mode.Colors.end());
    const bool usesWhite = std::any_of(models_.begin(), models_.end(), [](const SideFiles& model) {
        return !model.WhiteTypes.empty();
    });
    for (std::size_t color = 0; color < facts_.Colors.size(); ++color) {
        if (used.contains(static_cast<int32_t>(color))) continue;
        if (usesWhite && facts_.Colors[color].InternalName == "White") continue;
        document_.Warning(facts_.ColorNodes[color], "no colour mode prints this colour");
    }
}

}  // namespace

void CheckFileNames(const CheckedDocument& document, const DescriptionFacts& facts,
                    const std::vector<SideFiles>& models) {
    NamesCheck(document, facts, models).Check();
}
