#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "driverhost/check/CheckedDocument.h"
#include "driverhost/check/DescriptionFacts.h"

/// What a model writes beside its channel files: name patterns, "" where it writes none.
struct SideFiles {
    pugi::xml_node Entry;  ///< of the ModelList
    std::string Model;
    std::string Ticket;
    std::string Header;
    std::string Preview;
    std::vector<int32_t> WhiteTypes;  ///< that can be in effect
    bool CreateFolder = true;
};

/// The names of the files that a page leaves: patterns that name no file, and files that would
/// replace one another.
void CheckFileNames(const CheckedDocument& document, const DescriptionFacts& facts,
                    const std::vector<SideFiles>& models);
