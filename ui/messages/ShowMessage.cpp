#include "ui/messages/ShowMessage.h"

#include <cstdint>
#include <nlohmann/json.hpp>

#include "platform/CodePage.h"
#include "platform/afx.h"
#include "ui/messages/MessageFile.h"
#include "ui/messages/StringTable.h"

int ShowMessage(const char* text, UINT type, HWND owner, const char* caption) {
    const UINT shownType = type | MB_SETFOREGROUND;
    if (!HasMessageFile()) return MessageBoxA(owner, text, caption, shownType);
    const nlohmann::ordered_json message = {
        {"text", AnsiToUtf8(text)},
        {"caption", caption == nullptr ? std::string() : AnsiToUtf8(caption)},
        {"type", shownType},
        {"owner", static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(owner))},
    };
    AppendToMessageFile(message.dump());
    return IDOK;
}

int ShowResMessage(UINT id, UINT type, HWND owner, const char* caption) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    char text[256] = {};
    LoadResString(id, text, sizeof text);
    return ShowMessage(text, type, owner, caption);
}
