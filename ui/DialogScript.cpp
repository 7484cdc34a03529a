#include "ui/DialogScript.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "host/FileBytes.h"
#include "host/Numbers.h"
#include "ui/messages/MessageFile.h"

namespace {

void Report(DialogSurface& dialog) {
    const DialogTemplate& shape = dialog.Template();
    std::string items;
    for (const std::string& item : dialog.Items())
        items += (items.empty() ? "" : ",") + JsonText(item);
    std::string visible;
    for (std::size_t i = 0; i < shape.ControlCount; ++i) {
        const int id = shape.Controls[i].Id;
        if (dialog.IsVisible(id)) visible += (visible.empty() ? "" : ",") + std::to_string(id);
    }
    AppendToMessageFile(R"({"dialog":)" + std::to_string(shape.Id) + R"(,"items":[)" + items +
                        R"(],"selection":)" + std::to_string(dialog.Selection()) +
                        R"(,"visible":[)" + visible + "]}");
}

/// The number behind a command's word; nothing for another command.
std::optional<int32_t> Argument(std::string_view line, std::string_view word) {
    if (!line.starts_with(word)) return std::nullopt;
    return LeadingDecimal(line.substr(word.size()));
}

/// Answers a dialog line by line.
class DialogScript final : public DialogRunner {
  public:
    explicit DialogScript(std::string text) : text_(std::move(text)) {}

    void RunDialog(DialogSurface& dialog, HWND /*owner*/) override {
        Report(dialog);
        std::string_view rest = text_;
        while (!rest.empty() && !dialog.HasEnded()) {
            const std::size_t end = rest.find('\n');
            Do(rest.substr(0, end), dialog);
            rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
            if (!dialog.HasEnded()) Report(dialog);
        }
        if (!dialog.HasEnded()) dialog.Press(IDCANCEL);
    }

  private:
    static void Do(std::string_view line, DialogSurface& dialog) {
        if (const auto position = Argument(line, "select ")) dialog.Select(*position);
        if (const auto id = Argument(line, "press ")) dialog.Press(*id);
    }

    std::string text_;
};

}  // namespace

int RunByScriptOrWindow(CDialog& dialog) {
    const char* const path = std::getenv("QL_DIALOG_SCRIPT");
    if (path == nullptr || *path == '\0') return dialog.DoModal();
    DialogScript script(ReadFileBytes(AFilePath(path)).value_or(""));
    return dialog.RunModal(script);
}
