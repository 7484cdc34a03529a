#include "driverhost/check/ReferencesCheck.h"

#include <fmt/format.h>

#include <map>
#include <string>

#include "host/Numbers.h"
#include "host/XmlReading.h"

namespace {

std::string IdentifierOf(const pugi::xml_node& item) {
    return TextOf(ChildElement(item, "ID")).value();
}

bool IsPosition(std::string_view text, std::size_t position) {
    return LeadingDecimal(text) == static_cast<int32_t>(position);
}

void CheckColorModes(const CheckedDocument& document, const DescriptionFacts& facts) {
    for (std::size_t position = 0; position < facts.ColorModes.size(); ++position) {
        const DescribedColorMode& mode = facts.ColorModes[position];
        const std::string text = IdentifierOf(mode.Node);
        if (!IsPosition(text, position) || text == std::to_string(position)) continue;
        document.Error(
            ChildElement(mode.Node, "ID"),
            fmt::format("channel names are looked up by the text of the ID, which is {} and must "
                        "be \"{}\": none is found for {}",
                        Quoted(text), position, Quoted(mode.Name)));
    }
}

void CheckColorants(const CheckedDocument& document, const DescriptionFacts& facts) {
    std::map<std::string, std::size_t> colors;  // the first position of each text
    for (std::size_t position = 0; position < facts.ColorNodes.size(); ++position)
        colors.emplace(IdentifierOf(facts.ColorNodes[position]), position);
    for (const DescribedColorMode& mode : facts.ColorModes) {
        ForEachElement(
            ChildElement(mode.Node, "ColorantList"), [&](const pugi::xml_node& colorant, int32_t) {
                const pugi::xml_attribute identifier = colorant.attribute("ID");
                const std::string text = *identifier.value() == '\0' ? "0" : identifier.value();
                const auto position = static_cast<std::size_t>(LeadingDecimal(text).value_or(-1));
                if (position >= facts.ColorNodes.size()) return;
                const std::string wanted = IdentifierOf(facts.ColorNodes[position]);
                const auto found = colors.find(text);
                const bool isFound = found != colors.end() && found->second == position;
                if (isFound || !IsPosition(wanted, position)) return;
                document.Error(
                    colorant, "ID",
                    fmt::format("channel names are looked up by the text of the ID: {} is not {}, "
                                "the ID of colour {}, so the names of {} go to other channels",
                                Quoted(text), Quoted(wanted), position, Quoted(mode.Name)));
            });
    }
}

}  // namespace

void CheckReferences(const CheckedDocument& document, const DescriptionFacts& facts) {
    CheckColorModes(document, facts);
    CheckColorants(document, facts);
}
