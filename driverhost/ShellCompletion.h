#pragma once

#include <string>

namespace CLI {
class App;
}

/// The bash script that completes a program's commands and options and what these take: files,
/// folders, models, choices. Made of the tree of commands alone.
std::string BashCompletion(const CLI::App& program);
