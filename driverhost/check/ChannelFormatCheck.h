#pragma once

#include "driverhost/check/CheckedDocument.h"
#include "driverhost/check/DescriptionFacts.h"

/// The extension of a channel's name chooses its format, and a slip of the pen another one than the
/// other channels have: reports extensions that stand out among those of a description.
void CheckChannelFormats(const CheckedDocument& document, const DescriptionFacts& facts);
