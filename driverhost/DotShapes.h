#pragma once

#include <optional>
#include <string_view>

/// The order in which ink fills a screen's cell: the higher the value at a place, the lighter the
/// tone from which it is inked. `x` and `y` run from -1 to 1 across the cell, `x` along the
/// screen's angle; values are -1 to 1.
using DotShape = double (*)(double x, double y);

/// The dot shape of a name of the shape table, case counts; null when there is none of that name.
/// "Double" puts two dots into a cell across the angle, "DoubleDot" two across and two along it,
/// their inverted forms the same gaps.
DotShape FindDotShape(std::string_view name);
