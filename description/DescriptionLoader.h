#pragma once

#include <optional>

#include "description/CDynamic.h"
#include "description/DescriptionLists.h"

/// The model list, in the base folder.
AFilePath ModelListPath();

/// Characters of a description's name in the model list; more are cut off.
inline constexpr std::size_t kMostFileNameCharacters = 255;

/// The file that the model list names for a model, at most 255 characters; nothing when the list
/// cannot be read, where `systemError` receives the system's number, or has no entry for the model.
std::optional<AString> FindModelDescriptionFile(const AString& modelName,
                                                int* systemError = nullptr);
/// The same in a model list that is loaded.
std::optional<AString> FindModelDescriptionFile(const AXMLTree& models, const AString& modelName);

/// The string resource `base` + 1 + `position`, which names an item instead of its `DisplayName`;
/// nothing when there is none.
std::optional<AString> DisplayNameResource(int32_t base, int32_t position);

/// Reads the lists of the document that `description` has just loaded. False, with the message
/// shown and `lists` incomplete, at the first fault.
bool ReadDescriptionLists(CDynamic& description, DescriptionLists& lists);
