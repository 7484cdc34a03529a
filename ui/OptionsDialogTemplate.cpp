#include "ui/OptionsDialogTemplate.h"

#include <iterator>

namespace {

constexpr ControlTemplate kControls[] = {
    {ControlKind::kDefaultButton, kOptionsOk, "OK", 7, 103, 50, 14},
    {ControlKind::kPushButton, kOptionsCancel, "Cancel", 65, 103, 50, 14},
    {ControlKind::kPushButton, kRestoreDefaults, "Restore Defaults", 123, 103, 99, 14},
    {ControlKind::kLabel, kWhiteLabel, "Print white color as:", 14, 29, 90, 8},
    {ControlKind::kDropDownList, kWhiteList, "", 121, 26, 82, 80},
};
constexpr DialogTemplate kTemplate = {.Id = kOptionsDialog,
                                      .Caption = "Driver Options",
                                      .Width = 229,
                                      .Height = 124,
                                      .FontName = "MS Sans Serif",
                                      .FontPoints = 8,
                                      .Controls = kControls,
                                      .ControlCount = std::size(kControls)};

}  // namespace

const DialogTemplate& OptionsDialogTemplate() {
    return kTemplate;
}
