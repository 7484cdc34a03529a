#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/DirectoryChain.h"

/// Which directories are which page's.
class PageTable {
  public:
    PageTable() = default;
    explicit PageTable(const DirectoryChain& chain);

    /// The count that the first directory names: 1 where it names no page, and as many as there
    /// are where it says 0.
    int32_t PageCount() const { return pageCount_; }

    /// The separations of a page, from 0; empty when the page is missing, stands in another
    /// page's place or more than once, or when a link that belongs to it is damaged: `failure`
    /// then says which.
    std::span<const ContainerDirectory> Separations(uint32_t page, ContainerFailure& failure) const;

  private:
    /// Neighbouring directories that name the same page.
    struct Group {
        uint16_t number;
        std::size_t begin;  ///< in directories_
        std::size_t end;
        const char* damage;  ///< why the page has no image; null for none
    };

    void AddGroups(const std::vector<ContainerDirectory>& directories, uint16_t count);

    int32_t pageCount_ = 0;
    ContainerFailure chainFailure_;
    std::vector<ContainerDirectory> directories_;  // those that name a page of the job
    std::vector<Group> groups_;
    std::vector<uint32_t> groupsOfNumber_;  // how many groups name each page number
};
