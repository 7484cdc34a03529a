#pragma once

#include <cstdint>
#include <limits>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "driverhost/check/CheckedDocument.h"
#include "driverhost/check/FileChecks.h"

/// Pieces of the check of halftone parameter files.

/// What the models have that a parameter file serves: items of each level of the tree, and colours.
/// Without a model, any.
struct ServedModels {
    static constexpr int32_t kAny = std::numeric_limits<int32_t>::max();
    int32_t Media = kAny;
    int32_t PrintModes = kAny;
    int32_t Resolutions = kAny;
    int32_t ColorModes = kAny;
    std::set<std::string> Colors;  ///< their names, folded; empty: any
};

/// What an `ID` serves.
struct ServedIDs {
    bool IsDefault = false;
    std::vector<int32_t> Numbers;
};

/// Reads an element's `ID` as the driver does and reports what it does not read of it.
ServedIDs ReadIDs(const CheckedDocument& document, const pugi::xml_node& element);

/// The elements of one level that were met so far, in document order.
class Siblings {
  public:
    explicit Siblings(const CheckedDocument& document) : document_(document) {}

    /// Reports the element when earlier ones serve all that it lists.
    void Add(const pugi::xml_node& element, const ServedIDs& served);

  private:
    const CheckedDocument& document_;
    std::map<int32_t, pugi::xml_node> serving_;  ///< by number
    pugi::xml_node default_;
};

/// Reports the children of `parent` that are not named `name`.
void CheckChildNames(const CheckedDocument& document, const pugi::xml_node& parent,
                     const std::vector<std::string_view>& names);

/// The tree below `PrinterHardware`.
void CheckPrinterHardware(const CheckedDocument& document, const pugi::xml_node& hardware,
                          const ParameterFileUse& use, const ServedModels& models);

/// A `DitherParams` entry that serves these level counts.
void CheckDitherEntry(const CheckedDocument& document, const pugi::xml_node& entry,
                      const ServedIDs& levelCounts);

/// The `Item` elements of a colour mode of models with these colours.
void CheckScreens(const CheckedDocument& document, const pugi::xml_node& colorMode,
                  const std::set<std::string>& colors);
