// What the kinds of files share, and options files, of which little is to be said.

#include <fmt/format.h>

#include "driverhost/NoFileReason.h"
#include "driverhost/check/FileChecks.h"
#include "platform/CodePage.h"

bool LoadNext(CheckRun& run, CheckedDocument& document, const AFilePath& path,
              CheckedDocument::Form form) {
    run.Named.insert(path.fullPath());
    if (document.Load(path, form)) return true;
    run.HasUnread = true;
    return false;
}

bool FollowName(CheckRun& run, const CheckedDocument& document, const pugi::xml_node& node,
                const char* attribute, const AFilePath& path) {
    if (!run.HasBaseFolder) return false;
    const std::string reason = NoFileReason(path);
    if (reason.empty()) {
        run.Named.insert(path.fullPath());
        return true;
    }
    const std::string name = path.isValid() ? AnsiToUtf8(path.fullPath())
                                            : std::string(node.attribute(attribute).value());
    document.Error(node, attribute, fmt::format("{} {}", Quoted(name), reason));
    return false;
}

void CheckOptionsFile(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kPlain)) return;
    document.CheckNames(document.Root(), {{"DriverOptions"}, {}, false, false});
    const pugi::xml_node options = ChildElement(document.Root(), "DriverOptions");
    if (!options) {
        document.Error(document.Root(), "no element \"DriverOptions\": the model's default counts");
        return;
    }
    document.CheckNames(options, {{}, {"SupportWhiteType"}, false, false});
    const std::string choice = options.attribute("SupportWhiteType").value();
    if (!choice.empty() && !document.Number(options, "SupportWhiteType")) {
        document.Warning(
            options, "SupportWhiteType",
            fmt::format("SupportWhiteType {} is no number of 32 bits", Quoted(choice)));
    }
}
