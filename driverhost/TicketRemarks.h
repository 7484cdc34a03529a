#pragma once

#include <string_view>

#include "driverhost/TemplateRemarks.h"

/// Remarks what of a job-ticket template will not be replaced, though it looks as if it should.
void ExplainTicket(std::string_view text, const TemplateRemarks& remarks);
