#include "host/PageTable.h"

namespace {

constexpr std::size_t kPageNumbers = 65536;  // that a 16-bit field can say

constexpr const char* kNoPageNumber = "a directory beside the page's names no page";
constexpr const char* kDamagedLink = "a directory link is damaged";

}  // namespace

PageTable::PageTable(const DirectoryChain& chain)
    : chainFailure_(chain.failure), groupsOfNumber_(kPageNumbers) {
    if (chain.directories.empty()) return;
    const ContainerDirectory& first = chain.directories.front();
    const uint16_t count = first.pageNumber ? first.pageCount : uint16_t{1};
    AddGroups(chain.directories, count);
    for (const Group& group : groups_)
        ++groupsOfNumber_[group.number];
    pageCount_ = count != 0 ? count : static_cast<int32_t>(groups_.size());
}

void PageTable::AddGroups(const std::vector<ContainerDirectory>& directories, uint16_t count) {
    const bool namesPages = directories.front().pageNumber.has_value();
    bool followsUnknown = false;
    for (const ContainerDirectory& directory : directories) {
        if (namesPages && !directory.pageNumber) {
            // It belongs to the page before or after it, so neither is known to be whole.
            if (!groups_.empty()) groups_.back().damage = kNoPageNumber;
            followsUnknown = true;
            continue;
        }
        const uint16_t number = directory.pageNumber.value_or(0);
        if (count != 0 && number >= count) continue;
        if (groups_.empty() || groups_.back().number != number) {
            groups_.push_back({number, directories_.size(), directories_.size(), nullptr});
        }
        Group& group = groups_.back();
        directories_.push_back(directory);
        group.end = directories_.size();
        if (followsUnknown) group.damage = kNoPageNumber;
        if (directory.hasDamagedLink) group.damage = kDamagedLink;
        followsUnknown = false;
    }
}

std::span<const ContainerDirectory> PageTable::Separations(uint32_t page,
                                                           ContainerFailure& failure) const {
    const bool isBroken = chainFailure_.text[0] != '\0';
    if (page >= groups_.size()) {
        failure = isBroken ? chainFailure_ : ContainerFailure("the container has no such page");
        return {};
    }
    const Group& group = groups_[page];
    const bool isElsewhere = group.number != page || groupsOfNumber_[page] != 1;
    if (!isElsewhere && group.damage == nullptr)
        return std::span(directories_).subspan(group.begin, group.end - group.begin);
    if (isElsewhere)
        failure = ContainerFailure("the page's directories do not stand together in their place");
    else
        failure = group.damage == kDamagedLink ? chainFailure_ : ContainerFailure(group.damage);
    return {};
}
