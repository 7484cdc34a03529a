#include "ui/messages/ShowMessage.h"

#include <cstdint>
#include <nlohmann/json.hpp>

#include "platform/CodePage.h"
#include "platform/afx.h"
#include "ui/messages/MessageFile.h"
#include "ui/messages/StringTable.h"

namespace {

bool FileMessage(const char* text, UINT type, HWND owner, const char* caption) {
    const nlohmann::ordered_json message = {
        {"text", AnsiToUtf8(text)},
        {"caption", caption == nullptr ? std::string() : AnsiToUtf8(caption)},
        {"type", type},
        {"owner", static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(owner))},
    };
    return AppendToMessageFile(message.dump());
}

}  // namespace

int ShowMessage(const char* text, UINT type, HWND owner, const char* caption) {
    const UINT shownType = type | MB_SETFOREGROUND;
    const bool isFiled = HasMessageFile() && FileMessage(text, shownType, owner, caption);
    return isFiled ? IDOK : MessageBoxA(owner, text, caption, shownType);
}

int ShowResMessage(UINT id, UINT type, HWND owner, const char* caption) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    char text[256] = {};
    LoadResString(id, text, sizeof text);
    return ShowMessage(text, type, owner, caption);
}
