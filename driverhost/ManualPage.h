#pragma once

#include <string>

namespace CLI {
class App;
}

/// The manual page of a program in the man macros, made of its tree of commands: what --help says
/// of each, and the program's footer as its exit status.
std::string ManualPage(const CLI::App& program);
