#include "host/PageTable.h"

namespace {

constexpr std::size_t kPageNumbers = 65536;  // that a 16-bit field can say

}  // namespace

PageTable::PageTable(const std::vector<ContainerDirectory>& directories)
    : groupsOfNumber_(kPageNumbers) {
    if (directories.empty()) return;
    const ContainerDirectory& first = directories.front();
    const uint16_t count = first.pageNumber ? first.pageCount : uint16_t{1};
    AddGroups(directories, count);
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
            if (!groups_.empty()) groups_.back().isDamaged = true;
            followsUnknown = true;
            continue;
        }
        const uint16_t number = directory.pageNumber.value_or(0);
        if (count != 0 && number >= count) continue;
        if (groups_.empty() || groups_.back().number != number) {
            groups_.push_back({number, directories_.size(), directories_.size(), false});
        }
        Group& group = groups_.back();
        directories_.push_back(directory);
        group.end = directories_.size();
        group.isDamaged = group.isDamaged || followsUnknown || directory.hasDamagedLink;
        followsUnknown = false;
    }
}

std::span<const ContainerDirectory> PageTable::Separations(uint32_t page) const {
    if (page >= groups_.size()) return {};
    const Group& group = groups_[page];
    if (group.number != page || group.isDamaged || groupsOfNumber_[page] != 1) return {};
    return std::span(directories_).subspan(group.begin, group.end - group.begin);
}
