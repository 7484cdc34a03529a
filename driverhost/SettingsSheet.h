#pragma once

#include "driverhost/OptionsFile.h"
#include "host/Records.h"

/// Shows a host's settings sheet: a page that says what the job is, and the driver's options page.
/// True when it ended with OK. Throws HostError where no window can be opened.
bool ShowSettingsSheet(OptionsFile& file, PrintSettings& settings);
