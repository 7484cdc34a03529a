#include "driverhost/TicketCommand.h"

#include <fmt/format.h>

#include <cstdio>
#include <functional>

#include "driverhost/CommandTree.h"
#include "driverhost/HostError.h"
#include "driverhost/TemplateOptions.h"
#include "driverhost/TicketRemarks.h"
#include "host/FileBytes.h"
#include "host/Text.h"
#include "plugin/output/JobTicket.h"
#include "plugin/output/LineSize.h"

namespace {

int32_t PaddedWidth(int64_t widthPixels, int32_t bits) {
    return static_cast<int32_t>(LineSizeBytes(widthPixels, bits) * 8 / bits);
}

TicketFacts SampleFacts() {
    TicketFacts facts;
    facts.originalFileName = "artwork.pdf";
    facts.paddedWidthPixels = PaddedWidth(1000, 1);
    facts.heightLines = 2000;
    facts.xResolution = 300;
    facts.yResolution = 600;
    facts.printerName = "Sample printer";
    facts.colorModeName = "CMYK";
    facts.hasColorModeName = true;
    return facts;
}

TicketFacts FactsOf(const JobPage& page) {
    TicketFacts facts;
    facts.originalFileName =
        FieldText(page.Header.OriginalFileName, sizeof page.Header.OriginalFileName - 1);
    facts.paddedWidthPixels = PaddedWidth(page.Page.WidthPixels, page.Page.Bits);
    facts.heightLines = static_cast<int32_t>(page.Page.Rows);
    facts.xResolution = double{page.Header.XResolution};
    facts.yResolution = double{page.Header.YResolution};
    facts.printerName = FieldText(page.Header.PrinterName, sizeof page.Header.PrinterName - 1);
    facts.colorModeName = page.ColorModeName;
    facts.hasColorModeName = page.HasColorModeName;
    return facts;
}

/// The lines of a tile that is given as PAGE,ROW,COLUMN.
AString Tile(const std::string& name, std::string_view text) {
    int32_t places[3] = {};
    for (int32_t& place : places) {
        const std::size_t comma = text.find(',');
        if ((comma == std::string_view::npos) != (&place == &places[2]))
            throw HostError(kUsage, fmt::format("{} takes PAGE,ROW,COLUMN", name));
        place = WholeNumber(name, text.substr(0, comma));
        text.remove_prefix(comma == std::string_view::npos ? 0 : comma + 1);
    }
    // Of two equal tiles, for a job of one has none.
    const int32_t pages[] = {places[0], places[0]};
    const int32_t rows[] = {places[1], places[1]};
    const int32_t columns[] = {places[2], places[2]};
    JobStatusRecord status{};
    status.RecordVersion = JobStatusRecord::kTileRecordVersion;
    status.TileCount = 2;
    status.TilePageNumbers = pages;
    status.TileRowNumbers = rows;
    status.TileColumnNumbers = columns;
    return TileBlock(status, 0);
}

void SetFact(TicketFacts& facts, const std::string& name, const std::string& value) {
    const std::map<std::string_view, std::function<void()>> setters = {
        {"QL_COPIES", [&] { facts.copies = WholeNumber(name, value); }},
        {"QL_ORIGINALFILE", [&] { facts.originalFileName = value; }},
        {"QL_WIDTHINDOTS", [&] { facts.paddedWidthPixels = WholeNumber(name, value); }},
        {"QL_HEIGHTINDOTS", [&] { facts.heightLines = WholeNumber(name, value); }},
        {"QL_WIDTHDPI", [&] { facts.xResolution = Number(name, value); }},
        {"QL_HEIGHTDPI", [&] { facts.yResolution = Number(name, value); }},
        {"QL_PRINTERNAME", [&] { facts.printerName = value; }},
        {"QL_COLORMODE",
         [&] {
             facts.colorModeName = value;
             facts.hasColorModeName = true;
         }},
        {"QL_TILES", [&] { facts.tiles = Tile(name, value); }},
    };
    setters.at(name)();
}

void ShowTicket(const TemplateOptions& options) {
    const AFilePath path = FindTemplate(options, "JobTicketTemplates");
    const std::optional<std::string> text = ReadFileBytes(path);
    if (!text) throw HostError(kFailed, fmt::format("{} cannot be read", path.fullPath()));
    std::vector<std::string_view> names;
    for (const TicketKeyword& keyword : TicketKeywords({}))
        names.push_back(keyword.Name);
    const auto given = GivenValues(options, names);
    TicketFacts facts = options.Job.empty() ? SampleFacts() : FactsOf(ReadJobPage(options));
    for (const auto& [name, value] : given)
        SetFact(facts, name, value);

    const std::string ticket = FillTicket(*text, facts);
    std::fwrite(ticket.data(), 1, ticket.size(), stdout);
    std::fflush(stdout);
    Findings findings;
    ExplainTicket(*text, TemplateRemarks(findings, path.fullPath(), *text));
    PrintFindings(findings, stderr);
}

}  // namespace

void AddTicketCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("ticket", "Show the job ticket that a template gives", ShowTicket);
    AddTemplateOptions(command, options);
    AddHelp(command,
            "The ticket goes to standard output, byte for byte as the driver would write it; what\n"
            "in the template looks like a keyword and is not replaced goes to standard error.\n"
            "Without --page the values are those of a sample page. A tile is given as\n"
            "QL_TILES=PAGE,ROW,COLUMN.",
            {"driverhost ticket FenlandW6Job.xml",
             "driverhost ticket FenlandT4Job.xml --set QL_COPIES=3 --set QL_TILES=1,2,1",
             "driverhost ticket FenlandW6Job.xml --page poster.job"});
}
