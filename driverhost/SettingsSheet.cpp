#include "driverhost/SettingsSheet.h"

#include <fmt/format.h>

#include <iterator>

#include "driverhost/DriverLibrary.h"
#include "driverhost/HostError.h"
#include "driverhost/OptionsPage.h"
#include "platform/WindowSystem.h"

namespace {

/// This host's own page: what the sheet is about.
class JobPage final : public SheetPage {
  public:
    JobPage(const OptionsFile& file, const PrintSettings& settings)
        : model_(fmt::format("Model: {}", settings.ModelName)),
          colorMode_(fmt::format("Colour mode: {}", settings.ColorModeIndex)),
          controls_{
              {ControlKind::kLabel, 1, file.IsJob() ? "A job" : "An option block", 14, 14, 200, 8},
              {ControlKind::kLabel, 2, model_.c_str(), 14, 29, 200, 8},
              {ControlKind::kLabel, 3, colorMode_.c_str(), 14, 44, 200, 8}},
          template_{.Id = 1,
                    .Caption = "Job",
                    .Width = 229,
                    .Height = 124,
                    .FontName = "MS Sans Serif",
                    .FontPoints = 8,
                    .Controls = controls_,
                    .ControlCount = std::size(controls_)} {}
    JobPage(const JobPage&) = delete;
    JobPage& operator=(const JobPage&) = delete;

    std::string Title() override { return template_.Caption; }
    const DialogTemplate& Template() const override { return template_; }
    bool IsVisible(int /*id*/) override { return true; }
    std::vector<std::string> Items() override { return {}; }
    int Selection() override { return -1; }
    void Select(int /*position*/) override {}
    void Press(int /*id*/) override {}
    bool HasEnded() override { return false; }
    bool Activate() override { return true; }
    bool Deactivate() override { return true; }
    void Accept() override {}

  private:
    std::string model_;
    std::string colorMode_;
    ControlTemplate controls_[3];
    DialogTemplate template_;
};

}  // namespace

bool ShowSettingsSheet(OptionsFile& file, PrintSettings& settings) {
    WindowSystem* const windows = OpenWindowSystem();
    if (windows == nullptr) throw HostError(kFailed, "no window can be opened here: set DISPLAY");
    const DriverLibrary library;
    JobPage job(file, settings);
    OptionsPage options(library, file.Block, settings);
    return windows->RunSheet("Settings", {&job, &options}) == IDOK;
}
