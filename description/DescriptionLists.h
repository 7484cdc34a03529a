#pragma once

#include <cstdint>

#include "host/Arrays.h"

/// How one list stands in the file.
struct ListKind {
    const char* name;
    const char* baseName;         ///< of its base resource number
    const char* wrongIdentifier;  ///< shown when an item has no valid identifier
};

inline constexpr ListKind kMedia = {"MediaList", "BaseMedia", "Wrong media index."};
inline constexpr ListKind kPrintModes = {"PrintModeList", "BasePrintMode",
                                         "Wrong PrintMode index."};
inline constexpr ListKind kResolutions = {"ResolutionList", "BaseResolution",
                                          "Wrong Resolution index."};
inline constexpr ListKind kColors = {"ColorList", "BaseColor", "Wrong Color index."};
inline constexpr ListKind kColorModes = {"ColorModeList", "BaseColorMode",
                                         "Wrong color mode index."};

/// What every list of a description says of its items; entry i of each array belongs to item i.
struct NamedItems {
    ADWordArray Identifiers;
    AStringArray InternalNames;
    AStringArray DisplayNames;
};

/// The colorants of one colour mode, in its order.
struct ColorModeColorants {
    ADWordArray Colors;       ///< positions in the colour list, which holds the names
    ADWordArray ColorDepths;  ///< bits per pixel
    AByteArray SpotFlags;     ///< 1 for a spot colour, else 0
};

/// The `Definition` of a description. Counts are -1 before a load.
struct DescriptionLists {
    int32_t DefaultMedia = 0;
    int32_t MediaCount = -1;
    int32_t PrintModeCount = -1;
    int32_t ResolutionCount = -1;
    int32_t ColorCount = -1;
    int32_t ColorModeCount = -1;

    NamedItems Media;
    NamedItems PrintModes;
    NamedItems Resolutions;
    ADWordArray XResolutions;  ///< dots per inch
    ADWordArray YResolutions;
    NamedItems Colors;
    NamedItems ColorModes;
    APtrArray<ColorModeColorants> ColorModeRecords;  ///< one for each colour mode
};
