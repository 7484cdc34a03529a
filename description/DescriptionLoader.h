#pragma once

#include <optional>

#include "description/CDynamic.h"
#include "description/DescriptionLists.h"

/// The file that the model list names for a model, at most 255 characters; nothing when the list
/// cannot be read or has no entry for the model.
std::optional<AString> FindModelDescriptionFile(const AString& modelName);

/// Reads the lists of the document that `description` has just loaded. False, with the message
/// shown and `lists` incomplete, at the first fault.
bool ReadDescriptionLists(CDynamic& description, DescriptionLists& lists);
