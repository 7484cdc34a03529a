#include "driverhost/OptionsPage.h"

#include "driverhost/HostError.h"
#include "ui/OptionsDialogTemplate.h"

/// The page as the plug-in hands it over. Only the order counts.
class OptionsPage::Operations {
  public:
    virtual ~Operations() = default;
    virtual int32_t OnInitDialog() = 0;
    virtual int32_t OnSetActive() = 0;
    virtual int32_t OnKillActive() = 0;
    virtual int32_t OnOK() = 0;
    virtual int32_t OnCommand(int32_t id) = 0;
    virtual int32_t Select(int32_t position) = 0;
    virtual int32_t Selection() = 0;
    virtual int32_t IsVisible(int32_t id) = 0;
    virtual int32_t Count() = 0;
    virtual int32_t Item(int32_t position, char* name) = 0;
};

OptionsPage::OptionsPage(const DriverLibrary& library, DriverOptionBlock& block,
                         PrintSettings& settings)
    : page_(static_cast<Operations*>(library.CreatePage(block, settings))) {
    page_->OnInitDialog();
}

OptionsPage::~OptionsPage() {
    delete page_;
}

const DialogTemplate& OptionsPage::Template() const {
    return OptionsDialogTemplate();
}

bool OptionsPage::IsVisible(int id) {
    return page_->IsVisible(id) != 0;
}

std::vector<std::string> OptionsPage::Items() {
    std::vector<std::string> items;
    for (int32_t position = 0; position < page_->Count(); ++position) {
        char name[256] = {};
        page_->Item(position, name);
        items.emplace_back(name);
    }
    return items;
}

int OptionsPage::Selection() {
    return page_->Selection();
}

void OptionsPage::Select(int position) {
    page_->Select(position);
}

void OptionsPage::Press(int id) {
    page_->OnCommand(id);
}

bool OptionsPage::Activate() {
    return page_->OnSetActive() != 0;
}

bool OptionsPage::Deactivate() {
    return page_->OnKillActive() != 0;
}

void OptionsPage::Accept() {
    page_->OnOK();
}
