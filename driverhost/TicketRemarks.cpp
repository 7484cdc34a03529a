#include "driverhost/TicketRemarks.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "plugin/output/JobTicket.h"

namespace {

constexpr std::string_view kPrefix = "QL_";

/// The capitals, digits and underscores that `text` begins with.
std::string_view Word(std::string_view text) {
    const auto belongs = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    };
    return text.substr(0, static_cast<std::size_t>(
                              std::find_if_not(text.begin(), text.end(), belongs) - text.begin()));
}

}  // namespace

void ExplainTicket(std::string_view text, const TemplateRemarks& remarks) {
    std::vector<std::string_view> names;
    for (const TicketKeyword& keyword : TicketKeywords({}))
        names.push_back(keyword.Name);
    std::set<std::string_view> met;
    for (std::size_t at = text.find(kPrefix); at != std::string_view::npos;
         at = text.find(kPrefix, at + kPrefix.size())) {
        const std::string_view word = Word(text.substr(at));
        const auto name = std::find_if(names.begin(), names.end(), [&](std::string_view known) {
            return word.starts_with(known);
        });
        if (name == names.end()) {
            // The program that reads the ticket may have words of its own with this beginning.
            std::string what = fmt::format("no keyword {}{}: it stays as it is", Quoted(word),
                                           DidYouMean(word, names));
            if (NearestName(word, names).empty())
                remarks.Warning(at, std::move(what));
            else
                remarks.Error(at, std::move(what));
        } else if (!met.insert(*name).second) {
            remarks.Error(
                at, fmt::format("only the first {} is replaced: this one stays as it is", *name));
        } else if (word != *name) {
            remarks.Warning(at, fmt::format("of {} only {} is replaced", Quoted(word), *name));
        }
    }
}
