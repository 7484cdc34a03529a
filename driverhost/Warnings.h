#pragma once

#include <set>
#include <string>

#include "driverhost/InkPlan.h"

/// Says each thing once, however many pages it concerns, as a line on standard error.
class Warnings {
  public:
    void Add(const std::string& text);
    /// What becomes of inks that a colour mode has no channel for.
    void AddPlan(const InkPlan& plan, const std::string& mode);

  private:
    std::set<std::string> said_;
};
