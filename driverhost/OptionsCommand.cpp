#include "driverhost/OptionsCommand.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "description/CDynamic.h"
#include "description/DriverOptions.h"
#include "description/ModelOutputSettings.h"
#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/OptionsFile.h"
#include "driverhost/OptionsPage.h"
#include "driverhost/SettingsSheet.h"
#include "driverhost/TextCompare.h"
#include "host/FileBytes.h"
#include "host/Numbers.h"
#include "host/Text.h"
#include "platform/win32.h"

namespace {

constexpr int32_t kShowDialog = 3;
constexpr int32_t kRestoreDefaults = 1003;

struct OptionsOptions {
    std::string Action;
    std::string File;
    std::string Value;
    std::string Model;
    std::string Encode;
    std::string Decode;
    std::string Output;
    std::string Sheet;
};

/// An option block and the model that it is for.
struct Subject {
    OptionsFile File;
    PrintSettings Settings;
};

Subject OpenSubject(const OptionsOptions& options, const std::string& path) {
    Subject subject = {OptionsFile(path), {}};
    const std::string& model = options.Model.empty() ? subject.File.Model() : options.Model;
    if (model.empty())
        throw HostError(kUsage, "say the block's model with --model; only a job file holds one");
    CopyText(subject.Settings.ModelName, sizeof subject.Settings.ModelName, model);
    subject.Settings.ColorModeIndex = subject.File.ColorMode();
    return subject;
}

ModelOutputSettings OfferOf(const PrintSettings& settings) {
    CDynamic description;
    ModelOutputSettings model;
    if (ReadModelOutputSettings(description, settings, model) == 0)
        throw HostError(kFailed,
                        fmt::format("the model \"{}\" cannot be read", settings.ModelName));
    return model;
}

/// The name of a treatment that the model offers; "none" for -1.
std::string NameOf(int32_t type, const ModelOutputSettings& model) {
    for (std::size_t i = 0; i < model.WhiteTypeCodes.size(); ++i)
        if (model.WhiteTypeCodes[i] == type && i < model.WhiteTypeNames.size())
            return fmt::format("{} ({})", model.WhiteTypeNames[i], type);
    return type < 0 ? "none" : fmt::format("{}, which the model does not offer", type);
}

std::string OffersOf(const ModelOutputSettings& model) {
    std::string offers;
    for (const int32_t code : model.WhiteTypeCodes)
        offers += (offers.empty() ? "" : ", ") + NameOf(code, model);
    return offers.empty() ? "no white ink" : offers;
}

void Show(Subject& subject) {
    const ModelOutputSettings model = OfferOf(subject.Settings);
    int32_t stored = -1;
    const bool isStored =
        HasDriverOptions(subject.File.Block) && ReadDriverOptions(subject.File.Block, stored) != 0;
    fmt::print("model:   {}\noffers:  {}\ndefault: {}\n", subject.Settings.ModelName,
               OffersOf(model), NameOf(model.DefaultWhiteType, model));
    if (isStored)
        fmt::print("stored:  {} in {}\n", NameOf(stored, model), subject.File.Block.FileName);
    else
        fmt::print("stored:  none, the block names no options file that can be read\n");
}

/// The position among what the model offers; a name wins over a number.
int32_t PositionOf(const std::string& value, const ModelOutputSettings& model) {
    const std::size_t count = std::min(model.WhiteTypeNames.size(), model.WhiteTypeCodes.size());
    for (std::size_t i = 0; i < count; ++i)
        if (SameIgnoringCase(model.WhiteTypeNames[i], value)) return static_cast<int32_t>(i);
    for (std::size_t i = 0; i < model.WhiteTypeCodes.size(); ++i)
        if (LeadingDecimal(value) == model.WhiteTypeCodes[i]) return static_cast<int32_t>(i);
    throw HostError(kUsage, fmt::format("no white treatment \"{}\"; the model offers {}", value,
                                        OffersOf(model)));
}

void Set(Subject& subject, const std::string& value, const DriverLibrary& library) {
    const int32_t position = PositionOf(value, OfferOf(subject.Settings));
    OptionsPage page(library, subject.File.Block, subject.Settings);
    page.Activate();
    page.Select(position);
    page.Deactivate();
}

/// Whether somebody or something can answer the driver's dialog.
bool CanEdit() {
    const char* const script = std::getenv("QL_DIALOG_SCRIPT");
    return (script != nullptr && *script != '\0') || OpenWindowSystem() != nullptr;
}

void Act(const OptionsOptions& options) {
    Subject subject = OpenSubject(options, options.File);
    if (options.Action == "show") return Show(subject);
    const DriverLibrary library;
    if (options.Action == "set") {
        if (options.Value.empty())
            throw HostError(kUsage, "say which white treatment to set, by name or number");
        Set(subject, options.Value, library);
    } else if (options.Action == "restore") {
        OptionsPage(library, subject.File.Block, subject.Settings).Press(kRestoreDefaults);
    } else {
        if (!CanEdit())
            throw HostError(kFailed,
                            "no window can be opened here: set DISPLAY, or answer the "
                            "dialog with a file that QL_DIALOG_SCRIPT names");
        library.CreateDriver()->ShowDriverOptions(&subject.File.Block, kShowDialog,
                                                  &subject.Settings, nullptr);
    }
    subject.File.Save();
    Show(subject);
}

void Decode(const OptionsOptions& options) {
    if (options.Output.empty()) throw HostError(kUsage, "say with -o where the block goes");
    const auto text = ReadFileBytes(AFilePath(options.Decode));
    if (!text) throw HostError(kFailed, fmt::format("cannot read {}", options.Decode));
    const DriverOptionBlock block = DecodeBlock(*text);
    if (!ReplaceFileBytes(AFilePath(options.Output),
                          {reinterpret_cast<const char*>(&block), sizeof block}))
        throw HostError(kFailed, fmt::format("cannot write {}", options.Output));
}

void ServeOptions(const OptionsOptions& options) {
    const int asked = !options.Action.empty() + !options.Encode.empty() + !options.Decode.empty() +
                      !options.Sheet.empty();
    if (asked != 1 || options.Action.empty() != options.File.empty())
        throw HostError(kUsage,
                        "say one thing to do: show, set, edit or restore with a file, or "
                        "--encode, --decode or --sheet");
    if (!options.Encode.empty()) {
        fmt::print("{}\n", EncodeBlock(OptionsFile(options.Encode).Block));
    } else if (!options.Decode.empty()) {
        Decode(options);
    } else if (!options.Sheet.empty()) {
        Subject subject = OpenSubject(options, options.Sheet);
        if (ShowSettingsSheet(subject.File, subject.Settings)) subject.File.Save();
        Show(subject);
    } else {
        Act(options);
    }
}

}  // namespace

void AddOptionsCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("options", "Show or change how white ink is treated", ServeOptions);
    command.add_option("ACTION", options.Action, "show, set, edit (in a window) or restore")
        ->check(CLI::IsMember({"show", "set", "edit", "restore"}));
    command.add_option("JOB", options.File, "A job file, or a file that holds an option block")
        ->type_name(kFileArgument);
    command.add_option("VALUE", options.Value, "For set: a treatment, by its name or number");
    command.add_option("--model", options.Model, "The model (default: the job's)")
        ->type_name(kModelArgument);
    command
        .add_option("--encode", options.Encode,
                    "Print the block of a job or block file in the host's text form")
        ->type_name(kFileArgument);
    command.add_option("--decode", options.Decode, "Make a block file of a text form, see -o")
        ->type_name(kFileArgument);
    command.add_option("-o,--output", options.Output, "The block file that --decode writes")
        ->type_name(kFileArgument);
    command
        .add_option("--sheet", options.Sheet,
                    "Show a settings sheet that holds the driver's page, for a job or block file")
        ->type_name(kFileArgument);
    AddHelp(command,
            "The choice is kept in an options file below the base folder, which the block names.",
            {"driverhost options show glass.job", "driverhost options set white.job overprint",
             "driverhost options restore white.job",
             "driverhost options --encode white.job > white.txt",
             "driverhost options --decode white.txt -o white.block",
             "driverhost options show white.block --model \"Fenland W6\"",
             "QL_DIALOG_SCRIPT=answers.txt driverhost options edit white.job"});
}
