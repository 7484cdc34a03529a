#pragma once

#include <cstdint>
#include <vector>

#include "PrinterDriver/Common/Xsrc/JobReport.h"
#include "description/ModelOutputSettings.h"
#include "host/AFilePath.h"
#include "host/WriterId.h"
#include "plugin/output/HeaderFields.h"

/// What a header tells of a page.
struct HeaderFacts {
    int32_t widthPixels = 0;  ///< not padded
    int32_t heightLines = 0;
    int32_t channelCount = 0;  ///< without white
    int32_t xResolution = 0;   ///< whole dots per inch
    int32_t yResolution = 0;
    int32_t bits = 1;  ///< per pixel
};

/// The keywords of a header template, with the page's values.
std::vector<HeaderKeyword> HeaderKeywords(const HeaderFacts& facts,
                                          const ModelOutputSettings& model);

/// Where a model's header template stands.
AFilePath HeaderTemplatePath(const ModelOutputSettings& model);

/// Whether the template gives a header: it can be read, and a line of it gives a field.
bool GivesHeader(const AFilePath& headerTemplate, const std::vector<HeaderKeyword>& keywords);

/// Writes a page's header from its template, replacing an older one. A template without a field
/// gives no header; a header that cannot be written or lacks fields is a doubt, and the page goes
/// on. Raises kOutputFailed for a malformed template.
void WriteHeaderFile(JobReport& report, WriterId writer, const AFilePath& headerTemplate,
                     const AFilePath& header, const std::vector<HeaderKeyword>& keywords);
