#pragma once

#include <string>
#include <vector>

/// A description with three media, three print modes, two resolutions, five colours and three
/// colour modes, without faults.
extern const char* const kGoodDescription;

/// One change of a text: every occurrence of `from`, of which there must be one, becomes `to`.
struct Edit {
    std::string from;
    std::string to;
};
std::string Edited(std::string text, const std::vector<Edit>& edits);
