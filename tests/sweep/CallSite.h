#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// An address in the code of a loaded library, or of the program (empty name). Plain data, so that
/// it outlives the process that met it.
struct CodePlace {
    std::array<char, 192> Library{};  ///< path, cut to fit
    uint64_t Offset = 0;              ///< from where the library is loaded

    std::string LibraryName() const;  ///< without folders and what follows the first '.'
    /// Part of the driver: the plug-in itself or its adapter to the PNG library.
    bool IsOurs() const;
    /// Of the program or of the C and C++ run time, which work on behalf of who called them.
    bool IsRuntime() const;
};

/// The innermost frames of a call, without those of the program and of the run time.
struct CallSite {
    std::array<CodePlace, 5> Frames{};
    int32_t Count = 0;
};

CodePlace PlaceOf(const void* address) noexcept;
/// Who calls this. Allocates nothing once it has been called.
CallSite CurrentCallSite() noexcept;

/// "Function < its caller < …" for each site, frames as the symbol tables name them.
std::vector<std::string> Describe(const std::vector<CallSite>& sites);
