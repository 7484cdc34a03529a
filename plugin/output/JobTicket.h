#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "PrinterDriver/Common/Xsrc/JobReport.h"
#include "host/AFilePath.h"
#include "host/AString.h"
#include "host/Records.h"
#include "host/WriterId.h"

/// What a job ticket tells of a page.
struct TicketFacts {
    int32_t copies = 1;
    AString originalFileName;  ///< in the code page
    int32_t paddedWidthPixels = 0;
    int32_t heightLines = 0;
    double xResolution = 0;  ///< dots per inch
    double yResolution = 0;
    AString printerName;    ///< in the code page
    AString colorModeName;  ///< as the description's service delivers it
    bool hasColorModeName = false;
    AString tiles;  ///< see TileBlock
};

/// A text in the code page as UTF-8, in `out`. 0, and `out` is empty, when the text is empty or
/// cannot be converted.
int32_t ToUtf8(const AString& text, AString& out);

/// The lines that place the page's tile among the tiles of the job; empty for a job without tiles.
AString TileBlock(const JobStatusRecord& status, int32_t pageIndex);

struct TicketKeyword {
    std::string_view Name;
    std::optional<AString> Replacement;  ///< nothing: the keyword stays
};

/// The keywords of a ticket, in the order in which they are replaced. None is part of another.
std::vector<TicketKeyword> TicketKeywords(const TicketFacts& facts);

/// A ticket template with each keyword replaced at its first occurrence; everything else stays,
/// byte for byte.
AString FillTicket(AString text, const TicketFacts& facts);

/// Writes a ticket from its template. 1, or 0 after a message and a doubt; then the ticket is the
/// template's copy, or whatever stood there where not even that could be made.
int32_t WriteTicketFile(JobReport& report, WriterId writer, const AFilePath& ticketTemplate,
                        const AFilePath& ticket, const TicketFacts& facts);
