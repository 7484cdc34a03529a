// Templates of headers and job tickets.

#include "description/ModelOutputSettings.h"
#include "driverhost/HeaderRemarks.h"
#include "driverhost/NoFileReason.h"
#include "driverhost/TicketRemarks.h"
#include "driverhost/check/FileChecks.h"
#include "host/FileBytes.h"
#include "plugin/output/HeaderFile.h"

namespace {

/// Notes that a template is looked at. False when it already was, or with the reason among the
/// findings when it cannot be read; else `text` is what the driver's reader, `read`, makes of it.
bool BeginTemplate(CheckRun& run, const AFilePath& path,
                   std::optional<std::string> (*read)(const AFilePath&, std::uint64_t, int*),
                   std::string& text) {
    run.Named.insert(path.fullPath());
    if (!run.Found.BeginFile(path.fullPath())) return false;
    std::string reason = NoFileReason(path);
    std::optional<std::string> content;
    if (reason.empty()) content = read(path, kMostTextBytes, nullptr);
    if (reason.empty() && !content) reason = "cannot be read";
    if (content) text = std::move(*content);
    if (!reason.empty()) run.Found.Add(Severity::kError, path.fullPath(), {}, "the file " + reason);
    return content.has_value();
}

}  // namespace

void CheckHeaderTemplate(CheckRun& run, const AFilePath& path) {
    std::string text;
    if (!BeginTemplate(run, path, ReadFileText, text)) return;
    const TemplateRemarks remarks(run.Found, path.fullPath(), text);
    ExplainHeader(text, HeaderKeywords({}, {}), remarks);
    NoteCut(path, text, remarks);
}

void CheckJobTicketTemplate(CheckRun& run, const AFilePath& path) {
    std::string text;
    if (!BeginTemplate(run, path, ReadFileBytes, text)) return;
    ExplainTicket(text, TemplateRemarks(run.Found, path.fullPath(), text));
}
