#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "driverhost/InkPlan.h"

/// Says each thing once, however many pages it concerns, as a line on standard error.
class Warnings {
  public:
    /// `strict`: what is to be warned of must not be.
    explicit Warnings(bool strict) : strict_(strict) {}

    void Add(const std::string& text);
    /// The rasteriser's complaints and what it does not draw, each with the first page that it
    /// concerns.
    void AddPage(std::size_t page, const std::vector<std::string>& complaints);
    /// Throws HostError when there was a warning and none must be.
    void EndIfStrict() const;
    /// What becomes of inks that a colour mode has no channel for.
    void AddPlan(const InkPlan& plan, const std::string& mode);

  private:
    bool strict_;
    std::set<std::string> said_;
    std::set<std::string> saidOfPages_;
};
