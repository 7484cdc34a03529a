#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/AString.h"

/// The host's growable arrays.
using AStringArray = std::vector<AString>;
using ADWordArray = std::vector<uint32_t>;
using AByteArray = std::vector<uint8_t>;

/// Pointers that the array owns.
template <class T>
using APtrArray = std::vector<std::unique_ptr<T>>;

/// Pointers to objects that somebody else owns.
template <class T>
using AObList = std::vector<T*>;
