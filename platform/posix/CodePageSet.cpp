#include "platform/posix/CodePageSet.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

/// A set that was learned. It is filled once and then stays as it is: readers need no lock.
struct LearnedSet {
    enum State : int { kFree, kBusy, kReady };
    std::atomic<int> Now = kFree;
    char Name[64] = {};
    bool IsKnown = false;
    CharacterSet Characters;
};

/// A process has one code page, as a rule. What does not fit here is learned at each use.
constinit LearnedSet learnedSets[8];

const LearnedSet* FindLearned(const char* name) {
    for (const LearnedSet& set : learnedSets)
        if (set.Now.load(std::memory_order_acquire) == LearnedSet::kReady &&
            std::strcmp(set.Name, name) == 0)
            return &set;
    return nullptr;
}

void Keep(const char* name, bool isKnown, const CharacterSet& characters) {
    const std::size_t bytes = std::strlen(name) + 1;
    if (bytes > sizeof LearnedSet::Name) return;
    for (LearnedSet& set : learnedSets) {
        int state = LearnedSet::kFree;
        if (!set.Now.compare_exchange_strong(state, LearnedSet::kBusy)) continue;
        std::memcpy(set.Name, name, bytes);
        set.IsKnown = isKnown;
        set.Characters = characters;
        set.Now.store(LearnedSet::kReady, std::memory_order_release);
        return;
    }
}

}  // namespace

CodePageSet CurrentCodePage() noexcept {
    const char* const name = std::getenv("QL_CODE_PAGE");
    CodePageSet page;
    if (name == nullptr || *name == '\0') return page;
    if (const LearnedSet* const learned = FindLearned(name)) {
        page.IsKnown = learned->IsKnown;
        page.Characters = learned->Characters;
    } else {
        const int error = page.Characters.Learn(name);
        page.IsKnown = error != EINVAL;
        if (error == 0 || error == EINVAL) Keep(name, page.IsKnown, page.Characters);
    }
    if (page.IsKnown && !page.Characters.IsUtf8()) page.Name = name;
    return page;
}
