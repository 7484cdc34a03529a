#pragma once

#include <cstdint>
#include <vector>

#include "description/ModelOutputSettings.h"
#include "host/AFilePath.h"
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

/// Writes a page's header from its template, replacing an older one. Without a template, or when
/// no line of it gives a field, there is no header; a failure is none of the page's. Raises
/// kOutputFailed for a malformed template.
void WriteHeaderFile(const AFilePath& headerTemplate, const AFilePath& header,
                     const std::vector<HeaderKeyword>& keywords);
