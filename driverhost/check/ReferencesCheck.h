#pragma once

#include "driverhost/check/CheckedDocument.h"
#include "driverhost/check/DescriptionFacts.h"

/// Channel names are found by the texts of identifiers, not by their numbers: reports colour modes
/// and colorants that are found by the number and not by the text, so that their names go to other
/// channels. Identifiers that are no positions are the lists' matter.
void CheckReferences(const CheckedDocument& document, const DescriptionFacts& facts);
