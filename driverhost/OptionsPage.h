#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "driverhost/DriverLibrary.h"
#include "platform/WindowSystem.h"

/// The driver's options page, driven through its table of operations; and what a window needs to
/// show it in a sheet.
class OptionsPage final : public SheetPage {
  public:
    /// Borrows all three for its own lifetime. Throws HostError when the driver answers no page.
    OptionsPage(const DriverLibrary& library, DriverOptionBlock& block, PrintSettings& settings);
    ~OptionsPage() override;
    OptionsPage(const OptionsPage&) = delete;
    OptionsPage& operator=(const OptionsPage&) = delete;

    std::string Title() override { return "Driver Options"; }
    const DialogTemplate& Template() const override;
    bool IsVisible(int id) override;
    std::vector<std::string> Items() override;
    int Selection() override;
    void Select(int position) override;
    void Press(int id) override;
    bool HasEnded() override { return false; }
    bool Activate() override;
    bool Deactivate() override;
    void Accept() override;

  private:
    class Operations;

    Operations* page_;  ///< owned, and deleted through its own table
};
