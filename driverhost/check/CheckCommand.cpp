#include "driverhost/check/CheckCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "driverhost/CommandTree.h"
#include "driverhost/HostError.h"
#include "driverhost/check/FileChecks.h"
#include "platform/CodePage.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

constexpr char kBaseVariable[] = "QL_BASE_FOLDER";

/// The base folder that a file of model data lies in, as far as its path is written out; empty when
/// it lies in none.
fs::path BaseFolderOf(const fs::path& file) {
    fs::path folder = file.parent_path();
    while (folder.has_relative_path()) {
        const fs::path name = folder.filename();
        if (name == "OutputDrivers") {
            return folder.has_parent_path() ? folder.parent_path() : fs::path(".");
        }
        folder = folder.parent_path();
    }
    return {};
}

void CheckFile(CheckRun& run, const fs::path& typed) {
    fs::path file = typed.lexically_normal();
    fs::path base = BaseFolderOf(file);
    if (base.empty()) {
        base = BaseFolderOf(fs::absolute(file));
        if (!base.empty()) file = fs::absolute(file);
    }
    run.HasBaseFolder = !base.empty();
    if (!run.HasBaseFolder) return CheckOneFile(run, AFilePath(file.string()));
    SetEnvironment(kBaseVariable, base.string().c_str());
    // Through the base folder, as the paths are written that other files name.
    CheckOneFile(run, AFilePath().Append(file.lexically_relative(base).string()));
}

std::string Count(std::size_t count, const char* what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string Summary(const Findings& found) {
    std::string text =
        fmt::format("{} checked: {}, {}", Count(found.Files().size(), "file"),
                    Count(found.Errors(), "error"), Count(found.Warnings(), "warning"));
    if (found.LeftOut() > 0) text += fmt::format("; {} not listed", found.LeftOut());
    return text;
}

void PrintJson(const Findings& found) {
    using Json = nlohmann::ordered_json;
    Json list = Json::array();
    for (const Findings::File& file : found.Files()) {
        for (const Finding& finding : file.List) {
            list.push_back({{"file", AnsiToUtf8(file.Name)},
                            {"line", finding.Position.Line},
                            {"column", finding.Position.Column},
                            {"severity", LevelName(finding.Level)},
                            {"text", finding.Text}});
        }
    }
    const Json report = {{"files", found.Files().size()},
                         {"errors", found.Errors()},
                         {"warnings", found.Warnings()},
                         {"notListed", found.LeftOut()},
                         {"findings", list}};
    fmt::print("{}\n", report.dump(2, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

int CheckModelData(const CheckOptions& options) {
    CheckRun run;
    std::error_code error;
    if (options.Path.empty()) {
        CheckBaseFolder(run);
    } else if (fs::is_directory(options.Path, error)) {
        SetEnvironment(kBaseVariable, options.Path.c_str());
        CheckBaseFolder(run);
    } else if (fs::exists(options.Path, error)) {
        CheckFile(run, options.Path);
    } else {
        throw HostError(kUsage, fmt::format("there is no file or folder {}", options.Path));
    }
    if (options.Json) {
        PrintJson(run.Found);
    } else {
        PrintFindings(run.Found, stdout);
        fmt::print("{}\n", Summary(run.Found));
    }
    const bool fails = run.Found.Errors() > 0 || (options.Strict && run.Found.Warnings() > 0);
    return fails ? kFailed : kSuccess;
}

void AddCheckCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("check", "Find what the driver would refuse, ignore or guess in model data",
                 CheckModelData);
    command
        .add_option("PATH", options.Path,
                    "A base folder, or one file of model data (default: the base folder)")
        ->type_name(kPathArgument);
    command.add_flag("--strict", options.Strict, "Fail on warnings too");
    command.add_flag("--json", options.Json, "Print JSON");
    AddHelp(
        command,
        "A finding is one line: FILE:LINE:COLUMN: error or warning: TEXT. An error is what the\n"
        "driver refuses and what ruins a print, for it comes out other than the file says; a\n"
        "warning what it ignores or guesses without that. Places in a compressed file are those\n"
        "of its text. The status is 1 when there are errors.",
        {"driverhost check", "driverhost check models --strict",
         "driverhost check models/OutputDrivers/FenlandR4.xml --json"});
}
