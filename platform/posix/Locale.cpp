#include "platform/Locale.h"

#include <locale.h>
#include <clocale>

struct ThreadCNumbers::State {
    locale_t former;
    locale_t own;
};

ThreadCNumbers::ThreadCNumbers() : state_(std::make_unique<State>()) {
    const locale_t none = static_cast<locale_t>(nullptr);
    state_->former = uselocale(none);
    const locale_t copy = duplocale(state_->former);
    state_->own = copy == none ? none : newlocale(LC_NUMERIC_MASK, "C", copy);
    if (state_->own != none) {
        uselocale(state_->own);
    } else if (copy != none) {
        freelocale(copy);
    }
}

ThreadCNumbers::~ThreadCNumbers() {
    if (state_->own == static_cast<locale_t>(nullptr)) return;
    uselocale(state_->former);
    freelocale(state_->own);
}
