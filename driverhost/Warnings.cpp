#include "driverhost/Warnings.h"

#include <fmt/format.h>

#include "driverhost/Speech.h"

#include "driverhost/HostError.h"

void Warnings::Add(const std::string& text) {
    if (said_.insert(text).second) Complain("warning: {}", text);
}

void Warnings::AddPage(std::size_t page, const std::vector<std::string>& complaints) {
    for (const std::string& complaint : complaints)
        if (saidOfPages_.insert(complaint).second)
            Add(fmt::format("page {}: {}", page + 1, complaint));
}

void Warnings::EndIfStrict() const {
    if (strict_ && !said_.empty())
        throw HostError(kFailed, "there are warnings, which --strict does not allow");
}

void Warnings::AddPlan(const InkPlan& plan, const std::string& mode) {
    for (const std::string& ink : plan.MixedSpots)
        Add(
            fmt::format("colour mode \"{}\" has no channel for the spot ink \"{}\"; it is printed "
                        "with process inks",
                        mode, ink));
    for (const std::string& ink : plan.LostInks)
        Add(fmt::format("colour mode \"{}\" has no channel for {}; it is left out", mode, ink));
}
