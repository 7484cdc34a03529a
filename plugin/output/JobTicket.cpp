#include "plugin/output/JobTicket.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "host/FileBytes.h"
#include "host/QLCopyFile.h"
#include "platform/CodePage.h"
#include "ui/messages/ShowMessage.h"

namespace {

/// One entry a tile; an array that the host did not give counts as zeros.
int32_t EntryOf(const int32_t* entries, int32_t tile) {
    return entries == nullptr ? 0 : entries[tile];
}

bool AnyEntry(const int32_t* entries, int32_t count) {
    return entries != nullptr &&
           std::any_of(entries, entries + count, [](int32_t entry) { return entry != 0; });
}

/// Shows the message; `what` says more of the file that is at fault.
int32_t CannotCreate(JobReport& report, const char* what, const AFilePath& file, int reason) {
    ShowMessage("Cannot create job ticket file");
    report.Note(Doubt::kSideFile, {"plugin\\output\\JobTicket", __LINE__}, what, file.shownName(),
                reason);
    return 0;
}

}  // namespace

int32_t ToUtf8(const AString& text, AString& out) {
    out = ExactAnsiToUtf8(text).value_or("");
    return out.empty() ? 0 : 1;
}

AString TileBlock(const JobStatusRecord& status, int32_t pageIndex) {
    if (status.RecordVersion < JobStatusRecord::kTileRecordVersion || status.TileCount < 2)
        return {};
    const struct {
        const char* format;
        const int32_t* entries;
    } lines[] = {
        {"\t<Page>{}</Page>\r\n", status.TilePageNumbers},
        {"\t<Row>{}</Row>\r\n", status.TileRowNumbers},
        {"\t<COLUMN>{}</COLUMN>\r\n", status.TileColumnNumbers},
    };
    const int32_t tile = std::min(status.TileCount - 1, pageIndex);
    AString block;
    for (const auto& line : lines)
        if (AnyEntry(line.entries, status.TileCount))
            block += fmt::format(fmt::runtime(line.format), EntryOf(line.entries, tile));
    return block;
}

std::vector<TicketKeyword> TicketKeywords(const TicketFacts& facts) {
    AString original;
    AString printer;
    ToUtf8(facts.originalFileName, original);
    ToUtf8(facts.printerName, printer);
    std::optional<AString> colorMode;
    if (facts.hasColorModeName) colorMode = facts.colorModeName;
    return {
        {"QL_COPIES", std::to_string(facts.copies)},
        {"QL_ORIGINALFILE", original},
        {"QL_WIDTHINDOTS", std::to_string(facts.paddedWidthPixels)},
        {"QL_HEIGHTINDOTS", std::to_string(facts.heightLines)},
        {"QL_WIDTHDPI", fmt::format("{:.1f}", facts.xResolution)},
        {"QL_HEIGHTDPI", fmt::format("{:.1f}", facts.yResolution)},
        {"QL_PRINTERNAME", printer},
        {"QL_COLORMODE", colorMode},
        {"QL_TILES", facts.tiles},
    };
}

AString FillTicket(AString text, const TicketFacts& facts) {
    // In their order: a later keyword is looked for in what an earlier one was replaced by, too.
    for (const TicketKeyword& keyword : TicketKeywords(facts)) {
        const std::size_t place = text.find(keyword.Name);
        if (place != AString::npos && keyword.Replacement)
            text.replace(place, keyword.Name.size(), *keyword.Replacement);
    }
    return text;
}

int32_t WriteTicketFile(JobReport& report, WriterId writer, const AFilePath& ticketTemplate,
                        const AFilePath& ticket, const TicketFacts& facts) {
    constexpr const char* kNoTemplate = "the ticket template cannot be read";
    constexpr const char* kNotWritten = "the ticket cannot be written";
    if (!ticketTemplate.isValid()) return CannotCreate(report, kNoTemplate, ticketTemplate, 0);
    if (!ticket.isValid()) return CannotCreate(report, kNotWritten, ticket, 0);
    int reason = 0;
    const std::optional<std::string> text = ReadFileBytes(ticketTemplate, kMostTextBytes, &reason);
    if (!text) {
        // Too large to be filled in, or missing; a copy of what there is stands for the ticket.
        QLCopyFile(ticketTemplate, ticket);
        return CannotCreate(report, kNoTemplate, ticketTemplate, reason);
    }
    if (!NameOneFile(ticketTemplate, ticket)) {
        const WriteOutcome copied = ReplaceFileBytes(ticket, *text, writer);
        if (!copied) return CannotCreate(report, kNotWritten, ticket, copied.SystemError);
    }
    const WriteOutcome filled = ReplaceFileBytes(ticket, FillTicket(*text, facts), writer);
    if (filled) return 1;
    return CannotCreate(report, "the ticket is its template's copy, it cannot be filled in", ticket,
                        filled.SystemError);
}
