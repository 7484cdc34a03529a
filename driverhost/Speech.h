#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <utility>

// What a command says while it works. A stream that takes nothing ends no work: a job under way
// goes on, and the program's end answers for the output that is missing.

/// To standard output.
template <class... Args>
void Say(fmt::format_string<Args...> format, Args&&... args) {
    const std::string text = fmt::format(format, std::forward<Args>(args)...);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/// To standard error, as a line that names the program, behind what standard output holds.
template <class... Args>
void Complain(fmt::format_string<Args...> format, Args&&... args) {
    const std::string text =
        fmt::format("driverhost: {}\n", fmt::format(format, std::forward<Args>(args)...));
    std::fflush(stdout);
    std::fwrite(text.data(), 1, text.size(), stderr);
}
