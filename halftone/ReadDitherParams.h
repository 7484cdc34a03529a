#pragma once

#include "halftone/HalftoneEntries.h"

/// Fills `out` with evenly spaced levels for the colorants, as many as the first one's depth
/// allows. Whether a parameter file may say more: not when the colorants are contone.
bool SetDefaultDitherParams(const ColorantInfoList& colorants, DitherParams& out);

/// Reads the dither parameters of a manufacturer's model over what stands in `out`, whose level
/// count and ink count say what is looked for. What was read before a fault stays. Numbers are
/// read in the locale in force.
HalftoneReading ReadDitherParams(std::string_view modelName, std::string_view manufacturer,
                                 const PrintSettings& settings, DitherParams& out);
