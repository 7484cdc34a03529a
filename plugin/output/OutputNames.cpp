#include "plugin/output/OutputNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "plugin/output/WhiteInk.h"

#include "host/Text.h"

namespace {

constexpr std::string_view kJobNamePlace = "filename";
constexpr const char* kNamelessJob = "Job";
/// Internal name of the colour whose channel the white file is.
constexpr const char* kWhite = "White";

void RemoveBracketedParts(AString& name) {
    for (;;) {
        const std::size_t open = name.find('(');
        const std::size_t close = name.find(')');
        if (open == AString::npos || close == AString::npos || open > close) return;
        name.erase(open, close - open + 1);
    }
}

/// "a.b,c" becomes "a_c": what stands between a '.' and the ',' behind it goes.
void JoinDottedParts(AString& name) {
    for (;;) {
        const std::size_t dot = name.find('.');
        const std::size_t comma = name.find(',');
        if (dot == AString::npos || comma == AString::npos || dot > comma) return;
        name.erase(dot, comma - dot);
        name[dot] = '_';
    }
}

}  // namespace

AString MakeJobName(const AString& sourceName) {
    AString name = sourceName;
    // The other signs here are never bytes inside another character, in no code page.
    const std::size_t colon = FindCharacter(name, ':');
    if (colon != AString::npos) name.erase(0, colon + 1);
    RemoveBracketedParts(name);
    const std::size_t extension = name.rfind('.');
    if (extension != AString::npos) name.erase(extension);
    JoinDottedParts(name);
    std::erase(name, ' ');
    const bool nameless = name.find_first_not_of("./\\") == AString::npos;
    return nameless ? kNamelessJob : name;
}

AString SubstituteJobName(const AString& pattern, const AString& jobName) {
    AString name = pattern;
    const std::size_t place = FindText(name, kJobNamePlace);
    if (place != AString::npos) name.replace(place, kJobNamePlace.size(), jobName);
    return name;
}

ChannelNaming::ChannelNaming(AStringArray patterns, int32_t channelCount, AString jobName)
    : patterns_(std::move(patterns)), channelCount_(channelCount), jobName_(std::move(jobName)) {}

const AString& ChannelNaming::Pattern(int32_t channel) const {
    static const AString kNone;
    const auto index = static_cast<std::size_t>(channel);
    return channel >= 0 && index < patterns_.size() ? patterns_[index] : kNone;
}

AString ChannelNaming::FileName(int32_t channel, const AString& name) const {
    if (channel < 0) return jobName_;
    const AString& pattern = name.empty() ? Pattern(channel) : name;
    if (!pattern.empty()) return SubstituteJobName(pattern, jobName_);
    const bool isJobNameTaken = hasWhite_ && whitePattern_.empty();
    if (isJobNameTaken && channelCount_ > 1) return fmt::format("{}_{}", jobName_, channel + 1);
    int32_t lowest = 0;
    while (lowest < channelCount_ && !Pattern(lowest).empty())
        ++lowest;
    return channel <= lowest ? jobName_ : fmt::format("{}_{}", jobName_, channel + 1);
}

void ChannelNaming::AddWhite(AString pattern) {
    hasWhite_ = true;
    whitePattern_ = std::move(pattern);
}

AString ChannelNaming::WhiteFileName() const {
    if (!whitePattern_.empty()) return SubstituteJobName(whitePattern_, jobName_);
    return channelCount_ == 1 ? jobName_ + "_2" : jobName_;
}

ChannelNaming PageNaming(CDynamic& description, const char* modelName,
                         const ModelOutputSettings& model, int32_t channelCount,
                         const AString& jobName) {
    ChannelNaming naming(model.ChannelNames, channelCount, jobName);
    const int32_t type = model.EffectiveWhiteType();
    if (type <= 0) return naming;
    AString pattern;
    if (IsPlainWhite(type)) {
        const auto last = model.ChannelNameMap.find(kWhite);
        if (last != model.ChannelNameMap.end()) pattern = last->second;
    } else if (!model.ChannelNames.empty()) {
        pattern = GetChannelName(description, kWhite, modelName);
    }
    naming.AddWhite(std::move(pattern));
    return naming;
}
