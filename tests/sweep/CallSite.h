#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// An address in the code of a loaded library, or of the program (empty name). Plain data, so that
/// it outlives the process that met it.
struct CodePlace {
    std::array<char, 192> Library{};  ///< path, cut to fit
    uint64_t Offset = 0;              ///< from where the library is loaded

    std::string_view LibraryName() const;  ///< without folders and what follows the first '.'
    bool IsOurs() const;                   ///< of the plug-in or its adapter to the PNG library
    bool IsRuntime() const;                ///< of who works for its caller: C, C++, this program
};

/// The innermost frames of a call, without those of the run time, and one for a whole library.
struct CallSite {
    std::array<CodePlace, 5> Frames{};
    int32_t Count = 0;
};

CodePlace PlaceOf(const void* address) noexcept;
/// Who calls this. Allocates nothing once it has been called.
CallSite CurrentCallSite() noexcept;

/// "Function < its caller < …" for each site.
std::vector<std::string> Describe(const std::vector<CallSite>& sites);
