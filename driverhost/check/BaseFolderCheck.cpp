#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "driverhost/check/FileChecks.h"
#include "host/Text.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kSettingsFolders[] = {"Jobs and Settings/OptionsDrivers",
                                            "ICCProfile/OptionsDrivers", "Devices/OptionsDrivers"};

/// Regular files of a folder, in the order of their names; none when there is no folder.
std::vector<fs::path> FilesOf(const AFilePath& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder.fullPath(), error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code gone;
        if (entry->is_regular_file(gone)) files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

struct HostFolder {
    const char* Name;
    Severity Level;  ///< of its absence
    const char* Consequence;
};

constexpr HostFolder kHostFolders[] = {
    {"Temp", Severity::kError,
     "reversed channels are written top line first, and white treatments 1 and 2 give a white file "
     "without lines"},
    {"temp", Severity::kWarning, "a job for which the host names no folder fails"},
    {kSettingsFolders[0], Severity::kWarning, "options are not stored"},
};

/// Whether files can be made there, found out by making one: permissions do not tell of a file
/// system that is full or takes no changes.
bool TakesFiles(const AFilePath& folder) {
    const std::string probe = CreatePrivateFolder(AFilePath(folder).Append("check-").fullPath());
    std::error_code error;
    return !probe.empty() && fs::remove(probe, error);
}

/// A base folder that has none of the folders that a host adds is model data on its way to one.
void CheckHostFolders(CheckRun& run) {
    const auto exists = [](const HostFolder& folder) {
        return AFilePath().Append(folder.Name).exists();
    };
    if (std::none_of(std::begin(kHostFolders), std::end(kHostFolders), exists)) return;
    for (const HostFolder& folder : kHostFolders) {
        const AFilePath path = AFilePath().Append(folder.Name);
        std::error_code error;
        std::string fault;
        if (!path.exists())
            fault = "the folder does not exist";
        else if (!fs::is_directory(path.fullPath(), error))
            fault = "it is no folder";
        else if (!TakesFiles(path))
            fault = "no file can be made in the folder";
        if (!fault.empty())
            run.Found.Add(folder.Level, path.fullPath(), {},
                          fmt::format("{}: {}", fault, folder.Consequence));
    }
}

void CheckOptionsFiles(CheckRun& run) {
    for (const char* const folder : kSettingsFolders) {
        for (const fs::path& file : FilesOf(AFilePath().Append(folder))) {
            if (file.filename().string().find("QL_DROP_") != std::string::npos) {
                CheckOptionsFile(run, AFilePath(file.string()));
            }
        }
    }
}

/// What stands among the model data and is reached from no list. Templates may have any name.
void CheckUnnamedFiles(CheckRun& run) {
    for (const fs::path& file : FilesOf(AFilePath().Append("OutputDrivers"))) {
        const std::string folder = file.parent_path().filename().string();
        const std::string extension = file.extension().string();
        const bool isTemplate = folder == "HeaderTemplates" || folder == "JobTicketTemplates";
        if (!EqualsIgnoringCase(extension, ".xml") && !isTemplate) continue;
        if (run.Named.contains(file.string()) || EqualsIgnoringCase(extension, ".md")) continue;
        run.Found.Add(Severity::kWarning, file.string(), {}, "no other file names this one");
    }
}

enum class Kind {
    kUnknown,
    kDescription,
    kManufacturerList,
    kModelMap,
    kParameterFile,
    kOptionsFile
};

Kind KindOf(const pugi::xml_node& root) {
    if (ChildElement(root, "ManufacturerList")) return Kind::kManufacturerList;
    if (ChildElement(root, "PrinterHardware")) return Kind::kParameterFile;
    if (ChildElement(root, "DriverOptions")) return Kind::kOptionsFile;
    for (const char* const part :
         {"Definition", "Control_Definition", "ModelList", "BaseResourceNumber"}) {
        if (ChildElement(root, part)) return Kind::kDescription;
    }
    for (const pugi::xml_node entry : root.children()) {
        if (entry.attribute("XMLFile")) return Kind::kModelMap;
    }
    return Kind::kUnknown;
}

}  // namespace

void CheckBaseFolder(CheckRun& run) {
    run.HasBaseFolder = true;
    const AFilePath data = AFilePath().Append("OutputDrivers");
    if (!data.exists()) {
        run.Found.Add(Severity::kError, data.fullPath(), {}, "the folder does not exist");
        return;
    }
    CheckModelList(run, AFilePath(data).Append("ZeComFile.xml"));
    for (const char* const list : {"Ditherparams.xml", "ScreeningParams.xml"}) {
        const AFilePath path = AFilePath(data).Append(list);
        if (path.exists()) CheckManufacturerList(run, path);
    }
    CheckOptionsFiles(run);
    if (!run.HasUnread) CheckUnnamedFiles(run);
    CheckHostFolders(run);
}

void CheckOneFile(CheckRun& run, const AFilePath& path) {
    const fs::path file(path.fullPath());
    const std::string folder = file.parent_path().filename().string();
    if (folder == "HeaderTemplates") return CheckHeaderTemplate(run, path);
    if (folder == "JobTicketTemplates") return CheckJobTicketTemplate(run, path);
    if (file.filename() == "ZeComFile.xml") return CheckModelList(run, path);

    Findings scratch;
    CheckedDocument document(scratch);
    if (!document.Load(path, CheckedDocument::Form::kEncoded)) {
        CheckedDocument(run.Found).Load(path, CheckedDocument::Form::kEncoded);
        return;
    }
    switch (KindOf(document.Root())) {
        case Kind::kManufacturerList:
            return CheckManufacturerList(run, path);
        case Kind::kParameterFile:
            return CheckParameterFile(run, path);
        case Kind::kOptionsFile:
            return CheckOptionsFile(run, path);
        case Kind::kModelMap:
            return CheckModelMap(run, path);
        case Kind::kDescription:
            return CheckDescription(run, path);
        default:
            run.Found.Add(Severity::kError, path.fullPath(), {},
                          "no kind of file that the driver reads: its root element holds nothing "
                          "that one would");
    }
}
