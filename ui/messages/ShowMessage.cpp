#include "ui/messages/ShowMessage.h"

#include <cstdint>
#include <string>

#include "platform/afx.h"
#include "ui/messages/MessageFile.h"
#include "ui/messages/StringTable.h"

namespace {

bool FileMessage(const char* text, UINT type, HWND owner, const char* caption) {
    const auto window = reinterpret_cast<std::uintptr_t>(owner);
    return AppendToMessageFile(R"({"text":)" + JsonText(text) + R"(,"caption":)" +
                               JsonText(caption == nullptr ? "" : caption) + R"(,"type":)" +
                               std::to_string(type) + R"(,"owner":)" + std::to_string(window) +
                               '}');
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
