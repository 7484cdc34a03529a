#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driverhost/TemplateRemarks.h"
#include "host/AFilePath.h"
#include "plugin/output/HeaderFields.h"

/// A header template as the driver's own reader takes it.
struct HeaderExplanation {
    std::vector<HeaderLine> Fields;  ///< the lines that give one; they point into the text
    std::vector<uint8_t> Bytes;      ///< of the header; none for a malformed template
    bool IsMalformed = false;        ///< the template ends the job
};

/// Reads `text`, which must outlive the answer, and remarks what the driver ignores, cuts or reads
/// other than it is written.
HeaderExplanation ExplainHeader(std::string_view text, const std::vector<HeaderKeyword>& keywords,
                                const TemplateRemarks& remarks);

/// Remarks that the template at `path`, of which `text` is read, goes on behind a NUL byte.
void NoteCut(const AFilePath& path, std::string_view text, const TemplateRemarks& remarks);
