#include "platform/HostPage.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/CodePage.h"
#include "platform/afx.h"

namespace {

/// Room that a name has which an operation gives back.
constexpr std::size_t kNameBytes = 256;

/// Nothing that a handler throws leaves the library.
template <class Call>
int32_t AnswerOr(int32_t failure, Call&& call) noexcept {
    try {
        return call();
    } catch (...) {
        return failure;
    }
}

/// A page as a host calls it: the virtual operations stand in the table in this order.
class HostPage {
  public:
    explicit HostPage(std::unique_ptr<CPropertyPage> page) : page_(std::move(page)) {}
    HostPage(const HostPage&) = delete;
    HostPage& operator=(const HostPage&) = delete;

    virtual ~HostPage() = default;
    virtual int32_t OnInitDialog() {
        return AnswerOr(0, [&] { return page_->OnInitDialog(); });
    }
    virtual int32_t OnSetActive() {
        return AnswerOr(0, [&] { return page_->OnSetActive(); });
    }
    virtual int32_t OnKillActive() {
        return AnswerOr(0, [&] { return page_->OnKillActive(); });
    }
    virtual int32_t OnOK() {
        return AnswerOr(0, [&] {
            page_->OnOK();
            return 1;
        });
    }
    virtual int32_t OnCommand(int32_t id) {
        return AnswerOr(0, [&] {
            page_->OnCommand(static_cast<WPARAM>(static_cast<uint32_t>(id)), 0);
            return 1;
        });
    }
    virtual int32_t Select(int32_t position) { return page_->DropDownList().SetCurSel(position); }
    virtual int32_t Selection() { return page_->DropDownList().GetCurSel(); }
    virtual int32_t IsVisible(int32_t id) {
        const CWnd* const control = page_->GetDlgItem(id);
        return control == nullptr ? 0 : control->IsWindowVisible();
    }
    virtual int32_t Count() { return page_->DropDownList().GetCount(); }
    virtual int32_t Item(int32_t position, char* name) {
        if (name == nullptr) return 0;
        return AnswerOr(0, [&] {
            const std::string text = page_->DropDownList().GetText(position);
            std::memset(name, 0, kNameBytes);
            const std::string_view shown = WholeCharacters(text, kNameBytes - 1);
            std::memcpy(name, shown.data(), shown.size());
            return 1;
        });
    }

  private:
    std::unique_ptr<CPropertyPage> page_;
};

}  // namespace

void* AfxPageForHost(std::unique_ptr<CPropertyPage> page) {
    return std::make_unique<HostPage>(std::move(page)).release();  // the host owns it from here
}
