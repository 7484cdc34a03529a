#pragma once

#include <string>

/// Looks at the files in which the driver finds the dither or screening parameters of a
/// manufacturer's model: the list `listFile`, and what it names. The driver passes over one that it
/// cannot read and answers other parameters; throws HostError, naming the file, instead. A base
/// folder without the list has no parameters, which is no fault.
void ExpectReadableParameters(const char* listFile, const std::string& model,
                              const std::string& manufacturer);
