#include "driverhost/ProofInks.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "driverhost/HostError.h"
#include "driverhost/TextCompare.h"

namespace {

bool HoldsWord(std::string_view name, std::string_view word) {
    for (std::size_t at = 0; at + word.size() <= name.size(); ++at)
        if (SameIgnoringCase(name.substr(at, word.size()), word)) return true;
    return false;
}

/// Whether an ink is a clear one: "Spot Varnish", "Gloss", "Clear 2".
bool IsVarnish(std::string_view name) {
    constexpr std::string_view kWords[] = {"varnish", "lacquer", "gloss", "clear", "primer"};
    return std::any_of(std::begin(kWords), std::end(kWords),
                       [name](std::string_view word) { return HoldsWord(name, word); });
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

}  // namespace

ProofInk InkOf(const PageChannel& channel) {
    if (SameIgnoringCase(channel.Ink, "White")) return {InkEffect::kWhite, channel.ColorValue};
    const bool isVarnish = IsVarnish(channel.Ink);
    return {isVarnish ? InkEffect::kVarnish : InkEffect::kColor, channel.ColorValue};
}

void KeepInks(std::vector<PageChannel>& channels, const std::vector<std::string>& names) {
    if (names.empty()) return;
    const auto isNamed = [](const PageChannel& channel, const std::string& name) {
        return SameIgnoringCase(channel.Ink, Trimmed(name));
    };
    std::string inks;
    for (const PageChannel& channel : channels)
        inks += (inks.empty() ? "" : ", ") + channel.Ink;
    for (const std::string& name : names)
        if (std::none_of(channels.begin(), channels.end(),
                         [&](const PageChannel& channel) { return isNamed(channel, name); }))
            throw HostError(kUsage,
                            fmt::format("the page has no ink \"{}\"; it has {}", name, inks));
    std::erase_if(channels, [&](const PageChannel& channel) {
        return std::none_of(names.begin(), names.end(),
                            [&](const std::string& name) { return isNamed(channel, name); });
    });
}
