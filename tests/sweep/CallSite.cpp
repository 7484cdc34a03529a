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

std::string CodePlace::LibraryName() const {
    const std::string_view path = Library.data();
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return std::string(name.substr(0, name.find('.')));
}

bool CodePlace::IsOurs() const {
    const std::string_view path = Library.data();
    return path.ends_with("/libOutputDriver.so") || path.ends_with("/libpng3.so");
}

bool CodePlace::IsRuntime() const {
    constexpr std::string_view kRuntime[] = {
        "libc.so", "libstdc++.so", "libgcc_s.so", "ld-linux", "libasan.so", "libubsan.so",
    };
    const std::string_view path = Library.data();
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name.empty() ||
           std::any_of(std::begin(kRuntime), std::end(kRuntime),
                       [&](std::string_view part) { return name.starts_with(part); });
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
        site.Frames[static_cast<std::size_t>(site.Count++)] = place;
    }
    return site;
}

namespace {

/// What the symbol table has for each offset, templates' arguments and parameters left out.
std::map<uint64_t, std::string> Functions(const std::string& library,
                                          const std::vector<uint64_t>& offsets) {
    std::string command = "addr2line -Cfs -e '" + library + "'";
    for (const uint64_t offset : offsets)
        command += fmt::format(" {:#x}", offset);
    std::map<uint64_t, std::string> names;
    std::FILE* const pipe = popen((command + " 2>/dev/null").c_str(), "r");
    if (pipe == nullptr) return names;
    std::array<char, 4096> line{};
    for (const uint64_t offset : offsets) {
        if (std::fgets(line.data(), line.size(), pipe) == nullptr) break;
        std::string_view name = line.data();
        constexpr std::string_view kUnnamed = "(anonymous namespace)::";
        if (name.starts_with(kUnnamed)) name.remove_prefix(kUnnamed.size());
        names[offset] = name.substr(0, std::min(name.find_first_of("(\n"), name.size()));
        if (std::fgets(line.data(), line.size(), pipe) == nullptr) break;  // the source line
    }
    pclose(pipe);
    return names;
}

}  // namespace

std::vector<std::string> Describe(const std::vector<CallSite>& sites) {
    std::map<std::string, std::vector<uint64_t>> offsets;
    for (const CallSite& site : sites)
        for (int i = 0; i < site.Count; ++i)
            offsets[site.Frames[static_cast<std::size_t>(i)].Library.data()].push_back(
                site.Frames[static_cast<std::size_t>(i)].Offset);
    std::map<std::string, std::map<uint64_t, std::string>> names;
    for (const auto& [library, places] : offsets)
        names[library] = Functions(library, places);
    std::vector<std::string> texts;
    for (const CallSite& site : sites) {
        std::string text;
        for (int i = 0; i < site.Count; ++i) {
            const CodePlace& place = site.Frames[static_cast<std::size_t>(i)];
            std::string& name = names[place.Library.data()][place.Offset];
            if (name.empty() || name == "??")
                name = fmt::format("{}+{:#x}", place.LibraryName(), place.Offset);
            text += (text.empty() ? "" : " < ") + name;
        }
        texts.push_back(text);
    }
    return texts;
}
