#include "platform/WindowSystem.h"

#include <cstdlib>

#include "platform/PathRules.h"
#include "platform/Program.h"

namespace {

bool IsSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// The module stays loaded: its toolkit cannot be started twice in a process.
WindowSystem* LoadWindowModule() {
    const std::string path =
        ModuleFolder() + kPathSeparator + kLibraryPrefix + "OutputDriverWindows" + kLibrarySuffix;
    const HMODULE module = LoadLibraryA(path.c_str());
    if (module == nullptr) return nullptr;
    const auto open =
        reinterpret_cast<WindowModuleEntry>(GetProcAddress(module, kWindowModuleEntry));
    return open == nullptr ? nullptr : open();
}

}  // namespace

WindowSystem* OpenWindowSystem() {
    if (IsSet("QL_DIALOG_SCRIPT")) return nullptr;  // a script answers: nobody watches a screen
    if (!IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY")) return nullptr;
    static WindowSystem* const windows = LoadWindowModule();
    return windows;
}
