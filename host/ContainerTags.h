#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <iterator>

/// A tag that decides how a separation is read or called.
struct ContainerTag {
    uint16_t number;
    /// Compressions that know it; none: it does not depend on them.
    std::array<uint16_t, 5> compressions{};
};

/// Tags that libtiff passes over, with a warning at most, when it has no memory for one or cannot
/// make sense of it. To go on with a default would print the wrong ink, or noise. (Without any of
/// the others that it is asked for here it refuses the directory itself.)
inline constexpr ContainerTag kContainerTags[] = {
    {262},                               // PhotometricInterpretation
    {266},                               // FillOrder
    {270},                               // ImageDescription
    {285},                               // PageName
    {292, {3}},                          // T4Options
    {317, {5, 8, 32946, 34925, 50000}},  // Predictor: LZW, both deflates, LZMA, zstd
    {347, {7}},                          // JPEGTables
};

/// Which of them a directory has, in the same order.
using ContainerTagSet = std::bitset<std::size(kContainerTags)>;
