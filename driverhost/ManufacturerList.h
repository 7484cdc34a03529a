#pragma once

#include <string>

/// The manufacturer with whose name a model's name begins, in any letter case, by the lists of
/// halftone parameters in the base folder: "Fenland" for "Fenland R4". The longest when there are
/// several, empty when there is none.
std::string ManufacturerOf(const std::string& model);
