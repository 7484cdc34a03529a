#include "driverhost/check/ListCheck.h"

#include <fmt/format.h>

#include "description/DescriptionLoader.h"
#include "platform/CodePage.h"

std::string Refusal(const char* message) {
    return fmt::format("; the driver refuses the description: {}", Quoted(message));
}

void CheckBaseNumber(const CheckedDocument& document, const ListKind& kind, int32_t itemCount) {
    const pugi::xml_node bases = ChildElement(document.Root(), "BaseResourceNumber");
    if (!bases) return;  // reported once, for all lists
    const pugi::xml_node base = ChildElement(bases, kind.baseName);
    if (!base) {
        document.Error(bases, fmt::format("no element {}; the driver shows \"Getting szNode node "
                                          "fails\" at each load",
                                          Quoted(kind.baseName)));
        return;
    }
    const std::string text = document.ChildText(bases, kind.baseName);
    if (text.empty()) return;
    const std::optional<int32_t> number = document.Number(base, kind.baseName, text);
    if (!number) {
        document.Warning(base, fmt::format("{} is no number; it counts as -1", Quoted(text)));
        return;
    }
    if (*number == -1) return;
    int32_t replaced = 0;
    for (int32_t position = 0; position < itemCount; ++position) {
        if (DisplayNameResource(*number, position)) ++replaced;
    }
    document.Warning(
        base, replaced == 0
                  ? fmt::format("no item of {} has a string resource behind {}; DisplayName names "
                                "them",
                                kind.name, *number)
                  : fmt::format("string resources replace the DisplayName of {} of the {} items of "
                                "{}",
                                replaced, itemCount, kind.name));
}

void CheckItemIdentifier(const CheckedDocument& document, const pugi::xml_node& item,
                         int32_t position, const ListKind& kind,
                         std::unordered_map<int32_t, pugi::xml_node>& met) {
    const pugi::xml_node node = ChildElement(item, "ID");
    if (!node) {
        document.Error(item, "the item has no element \"ID\"" + Refusal(kind.wrongIdentifier));
        return;
    }
    const std::string text = document.ChildText(item, "ID");
    const std::optional<int32_t> identifier = document.Number(node, "ID", text);
    if (!identifier || *identifier < 0) {
        document.Error(node, fmt::format("ID {} is no number of 0 or more{}", Quoted(text),
                                         Refusal(kind.wrongIdentifier)));
        return;
    }
    const auto [earlier, isFirst] = met.emplace(*identifier, item);
    if (!isFirst) {
        document.Error(node, fmt::format("ID {} is taken by the item in line {}", *identifier,
                                         document.PositionOf(earlier->second).Line));
    } else if (*identifier != position) {
        document.Error(node, fmt::format("ID {} is not the item's position, {}: what refers to it "
                                         "finds another item",
                                         *identifier, position));
    }
}

std::string CheckItemName(const CheckedDocument& document, const pugi::xml_node& item,
                          const char* name, std::size_t mostBytes) {
    const pugi::xml_node node = ChildElement(item, name);
    std::string text = document.ChildText(item, name);
    if (!node) {
        document.Warning(
            item, fmt::format("the item has no element {}; it counts as empty", Quoted(name)));
    } else if (text.empty()) {
        document.Warning(node, fmt::format("{} is empty", name));
    } else if (text.find_first_of(" \t\r\n") == 0 ||
               text.find_last_of(" \t\r\n") == text.size() - 1) {
        document.Warning(node, fmt::format("the blanks around the text belong to {}", name));
    }
    if (Utf8ToAnsi(text).size() > mostBytes) {
        document.Error(node, fmt::format("{} is longer than the {} bytes that the host sees", name,
                                         mostBytes));
    }
    return text;
}
