#pragma once

#include <cstddef>

/// What a control of a dialog is.
enum class ControlKind { kDefaultButton, kPushButton, kLabel, kDropDownList };

/// A control; place and size in dialog units. The size of a drop-down list is that of its opened
/// list.
struct ControlTemplate {
    ControlKind Kind;
    int Id;
    const char* Text;
    int X;
    int Y;
    int Width;
    int Height;
};

/// A dialog as every window system builds it: a frame with a caption and a system menu, controls in
/// tab order. A dialog unit is a quarter of the font's mean character width and an eighth of its
/// height.
struct DialogTemplate {
    unsigned Id;
    const char* Caption;
    int Width;
    int Height;
    const char* FontName;
    int FontPoints;
    const ControlTemplate* Controls;
    std::size_t ControlCount;
};
