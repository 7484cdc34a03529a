#include "host/GetZeColorValue.h"

#include <string>

#include "host/Text.h"
#include "platform/CodePage.h"

namespace {

struct InkColor {
    std::string_view name;  ///< lower case, without blanks, '-' and '_'
    uint32_t color;         ///< 0x00BBGGRR
};

constexpr InkColor kInkColors[] = {
    {"cyan", 0xFFFF00},        {"c", 0xFFFF00},
    {"magenta", 0xFF00FF},     {"m", 0xFF00FF},
    {"yellow", 0x00FFFF},      {"y", 0x00FFFF},
    {"black", 0x000000},       {"k", 0x000000},
    {"photoblack", 0x000000},  {"pk", 0x000000},
    {"matteblack", 0x282828},  {"mk", 0x282828},
    {"lightcyan", 0xFFFF99},   {"lc", 0xFFFF99},
    {"cyanlight", 0xFFFF99},   {"lightmagenta", 0xFF99FF},
    {"lm", 0xFF99FF},          {"magentalight", 0xFF99FF},
    {"lightyellow", 0x99FFFF}, {"ly", 0x99FFFF},
    {"yellowlight", 0x99FFFF}, {"lightblack", 0x808080},
    {"lk", 0x808080},          {"blacklight", 0x808080},
    {"gray", 0x808080},        {"grey", 0x808080},
    {"gy", 0x808080},          {"lightlightblack", 0xC0C0C0},
    {"llk", 0xC0C0C0},         {"lightgray", 0xC0C0C0},
    {"lightgrey", 0xC0C0C0},   {"lgy", 0xC0C0C0},
    {"darkgray", 0x404040},    {"darkgrey", 0x404040},
    {"dgy", 0x404040},         {"orange", 0x0080FF},
    {"or", 0x0080FF},          {"o", 0x0080FF},
    {"green", 0x00B000},       {"gr", 0x00B000},
    {"g", 0x00B000},           {"violet", 0xD0007F},
    {"vi", 0xD0007F},          {"v", 0xD0007F},
    {"purple", 0xD0007F},      {"red", 0x0000FF},
    {"r", 0x0000FF},           {"blue", 0xFF0000},
    {"b", 0xFF0000},           {"white", 0xFFFFFF},
    {"w", 0xFFFFFF},           {"wh", 0xFFFFFF},
    {"varnish", 0xF0F5F5},     {"va", 0xF0F5F5},
    {"clear", 0xF0F5F5},       {"gloss", 0xF0F5F5},
    {"primer", 0xE0E8E8},
};

/// The name, in lower case, as the table spells it.
std::string TableName(std::string_view name) {
    std::string plain;
    while (!name.empty()) {
        const std::string_view character = name.substr(0, CharacterBytes(name));
        name.remove_prefix(character.size());
        if (character != " " && character != "-" && character != "_") plain += character;
    }
    return plain;
}

/// FNV-1a over the lower-cased name, folded to 24 bits: the same on every system and run.
uint32_t ColorFromName(std::string_view name) {
    uint32_t hash = 2166136261U;
    for (const char character : name)
        hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
    return (hash ^ (hash >> 24)) & 0xFFFFFF;
}

}  // namespace

uint32_t GetZeColorValue(std::string_view name) {
    const AString lower = LowerCase(name);
    const std::string plain = TableName(lower);
    for (const InkColor& ink : kInkColors) {
        if (ink.name == plain) return ink.color;
    }
    return ColorFromName(lower);
}
