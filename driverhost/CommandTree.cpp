#include "driverhost/CommandTree.h"

void AddHelp(CLI::App& command, const std::string& notes,
             std::initializer_list<const char*> examples) {
    std::string text = notes.empty() ? "" : notes + "\n\n";
    text += examples.size() == 1 ? "Example:" : "Examples:";
    for (const char* const example : examples)
        text.append("\n  ").append(example);
    command.footer(text);
}
