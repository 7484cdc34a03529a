#pragma once

#include "host/AString.h"

/// A new identifier, different on every call on any machine: 32 hexadecimal digits.
AString FSGanerateID();
