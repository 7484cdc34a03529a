#pragma once

#include <map>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <vector>

#include "driverhost/check/CheckedDocument.h"
#include "driverhost/check/DescriptionFacts.h"
#include "driverhost/check/Findings.h"
#include "host/AFilePath.h"
#include "host/AXMLTree.h"

/// What `driverhost check` knows of each kind of file: one function a kind. A function reads its
/// file with the driver's own reading pieces, adds to the run's findings what the driver refuses,
/// ignores or guesses, and goes on with the files that its file names. A file is looked at once in
/// a run.

/// Entries of a list of models that are compared with one another; of longer lists, which only a
/// fault can make, the comparison is left out.
inline constexpr int32_t kMostModels = 1000;

/// The models that a description has output rules for.
struct OutputRules {
    bool HasList = false;  ///< without one every model has the default rules
    std::vector<std::string> Models;
};

struct CheckRun {
    Findings Found;
    /// Whether QL_BASE_FOLDER names the folder that the files belong to. Without it names of other
    /// files are not followed.
    bool HasBaseFolder = false;
    /// The base folder's model list, when it could be read and has at most kMostModels entries.
    std::unique_ptr<AEnXMLTree> Models;
    /// Full paths of the files that other files name.
    std::set<std::string> Named;
    /// Whether a file could not be read, which may name others.
    bool HasUnread = false;
    std::map<std::string, OutputRules> Rules;  ///< of each description, by its full path
};

/// `OutputDrivers/ZeComFile.xml` and the descriptions that it names.
void CheckModelList(CheckRun& run, const AFilePath& path);

/// A description with the templates that it names.
void CheckDescription(CheckRun& run, const AFilePath& path);

/// What the driver's own reader shows last when it refuses a description, "" when it shows nothing;
/// no value when it loads it.
std::optional<std::string> DriverRefusal(const std::string& description);

/// An options file, in one of the settings folders.
void CheckOptionsFile(CheckRun& run, const AFilePath& path);

/// What a parameter file is for, as far as the files that name it say.
struct ParameterFileUse {
    enum class Kind { kEither, kDither, kScreening };
    Kind Leaves = Kind::kEither;
    std::vector<std::string> Models;  ///< that a map leads to it; empty: any
};

/// A manufacturers' list (`Ditherparams.xml` or `ScreeningParams.xml`), the parameters of everyone
/// else in it, and the files that it names.
void CheckManufacturerList(CheckRun& run, const AFilePath& path);
/// A model map and the parameter files that it names.
void CheckModelMap(CheckRun& run, const AFilePath& path,
                   ParameterFileUse::Kind leaves = ParameterFileUse::Kind::kEither);
/// A parameter file.
void CheckParameterFile(CheckRun& run, const AFilePath& path, const ParameterFileUse& use = {});

/// A header template, a job-ticket template: lines and keywords that the driver passes over.
void CheckHeaderTemplate(CheckRun& run, const AFilePath& path);
void CheckJobTicketTemplate(CheckRun& run, const AFilePath& path);

/// Everything below the base folder that QL_BASE_FOLDER names.
void CheckBaseFolder(CheckRun& run);

/// Any one file, told by its folder, name and content.
void CheckOneFile(CheckRun& run, const AFilePath& path);

// Pieces of the description's check.

/// Base resource numbers and the lists of what there is.
DescriptionFacts CheckDefinition(const CheckedDocument& document);
/// The tree of allowed combinations.
void CheckCombinations(const CheckedDocument& document, const DescriptionFacts& facts);
/// The output rules of each model and the names of its files.
void CheckOutputRules(CheckRun& run, const CheckedDocument& document,
                      const DescriptionFacts& facts);

/// How a refusal is put that comes without a message box.
inline constexpr char kWithoutMessage[] = "without a message";

/// Loads a file of the run. False, with the reason among the findings, when the driver cannot read
/// it.
bool LoadNext(CheckRun& run, CheckedDocument& document, const AFilePath& path,
              CheckedDocument::Form form);

/// Notes that an attribute of `document` names the file at `path`. False, with an error at the
/// attribute, when it is no file; false too when names are not followed.
bool FollowName(CheckRun& run, const CheckedDocument& document, const pugi::xml_node& node,
                const char* attribute, const AFilePath& path);
