#include "sweep/CallSite.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <fmt/format.h>
#include <link.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

std::string_view CodePlace::LibraryName() const {
    const std::string_view path = Library.data();
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.find('.'));
}

bool CodePlace::IsOurs() const {
    return LibraryName() == "libOutputDriver" || LibraryName() == "libpng3";
}

bool CodePlace::IsRuntime() const {
    constexpr std::string_view kRuntime[] = {
        "", "libc", "libstdc++", "libgcc_s", "ld-linux-x86-64", "libasan", "libubsan",
    };
    return std::find(std::begin(kRuntime), std::end(kRuntime), LibraryName()) != std::end(kRuntime);
}

// Neither allocates nor locks, so that allocations inside the loader can ask as well.
CodePlace PlaceOf(const void* address) noexcept {
    CodePlace place;
    dl_find_object object = {};
    if (_dl_find_object(const_cast<void*>(address), &object) != 0) return place;
    std::strncpy(place.Library.data(), object.dlfo_link_map->l_name, place.Library.size() - 1);
    place.Offset = reinterpret_cast<uint64_t>(address) - object.dlfo_link_map->l_addr;
    return place;
}

CallSite CurrentCallSite() noexcept {
    std::array<void*, 64> addresses{};
    const int count = backtrace(addresses.data(), static_cast<int>(addresses.size()));
    CallSite site;
    for (int i = 0; i < count && site.Count < static_cast<int32_t>(site.Frames.size()); ++i) {
        CodePlace place = PlaceOf(addresses[static_cast<std::size_t>(i)]);
        if (place.IsRuntime()) continue;
        --place.Offset;  // into the call, which may be its function's last instruction
        CodePlace* const last = site.Frames.data() + site.Count - 1;
        if (site.Count > 0 && !place.IsOurs() && last->Library == place.Library) continue;
        site.Frames[static_cast<std::size_t>(site.Count++)] = place;
    }
    return site;
}

namespace {

/// A function's name without its namespace, result, parameters and template arguments.
std::string ShortName(std::string_view name) {
    constexpr std::string_view kUnnamed = "(anonymous namespace)::";
    std::string text;
    int depth = 0;
    for (std::size_t i = 0; i < name.size() && name[i] != '\n'; ++i) {
        if (name.substr(i).starts_with(kUnnamed)) {
            i += kUnnamed.size() - 1;
            continue;
        }
        if (name[i] == '(' || name[i] == '[') break;
        if (name[i] == '>') --depth;
        if (name[i] == ' ' && depth == 0)
            text.clear();
        else if (name[i] == '<')
            ++depth;
        else if (depth == 0 && name[i] != '>')
            text += name[i];
    }
    return text;
}

bool HasName(const CodePlace& place) {
    return place.LibraryName() == "libOutputDriver";
}

/// What the plug-in's symbol table has for the frames.
std::map<uint64_t, std::string> Functions(const std::vector<CallSite>& sites) {
    std::map<uint64_t, std::string> names;
    for (const CallSite& site : sites)
        for (const CodePlace& place : site.Frames)
            if (HasName(place)) names[place.Offset];
    std::string command = "addr2line -Cfs -e '" OUTPUT_DRIVER_LIBRARY "' 2>/dev/null";
    for (const auto& [offset, name] : names)
        command += fmt::format(" {:#x}", offset);
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 8192> line{};
    for (auto& [offset, name] : names) {
        if (pipe == nullptr || std::fgets(line.data(), line.size(), pipe) == nullptr) break;
        name = ShortName(line.data());
        if (std::fgets(line.data(), line.size(), pipe) == nullptr) break;  // the source line
    }
    if (pipe != nullptr) pclose(pipe);
    return names;
}

}  // namespace

std::vector<std::string> Describe(const std::vector<CallSite>& sites) {
    const std::map<uint64_t, std::string> names = Functions(sites);
    std::vector<std::string> texts;
    for (const CallSite& site : sites) {
        std::string& text = texts.emplace_back();
        for (int i = 0; i < site.Count; ++i) {
            const CodePlace& place = site.Frames[static_cast<std::size_t>(i)];
            text += fmt::format("{}{}", i == 0 ? "" : " < ",
                                HasName(place) ? names.at(place.Offset) : place.LibraryName());
        }
    }
    return texts;
}
