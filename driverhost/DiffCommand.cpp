#include "driverhost/DiffCommand.h"

#include <fmt/format.h>

#include <cstdio>
#include <new>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>

#include "driverhost/CommandTree.h"
#include "driverhost/FileDiff.h"

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

// As diff answers.
constexpr int kEqual = 0;
constexpr int kDifferent = 1;
constexpr int kTrouble = kUsage;

struct DiffOptions {
    std::string A;
    std::string B;
    RawShapeOptions Raw;
    bool Json = false;
};

/// What stands below a folder and is no folder itself, by paths relative to it.
std::set<std::string> NamesBelow(const fs::path& folder) {
    std::set<std::string> names;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, error);
    for (const fs::recursive_directory_iterator end; !error && entry != end;
         entry.increment(error)) {
        std::error_code gone;
        if (!entry->is_directory(gone) || entry->is_symlink(gone))
            names.insert(entry->path().lexically_relative(folder).string());
    }
    if (error)
        throw HostError(
            kUsage, fmt::format("cannot read the folder {}: {}", folder.string(), error.message()));
    return names;
}

class Comparison {
  public:
    explicit Comparison(const DiffOptions& options) : options_(options) {}

    void Files(const fs::path& a, const fs::path& b, const std::string& name) {
        try {
            const std::optional<FileDifference> difference =
                DifferenceOf(a, b, options_.Raw, printed_);
            if (difference)
                Differ(name, *difference);
            else
                ++equal_;
        } catch (const HostError& error) {
            if (error.Status() == kAborted) throw;
            if (!options_.Json) {
                std::fflush(stdout);
                fmt::print(stderr, "driverhost: {}\n", error.what());
            }
            unreadable_.push_back({{"file", name}, {"error", error.what()}});
        }
    }

    void Folders(const fs::path& a, const fs::path& b) {
        const std::set<std::string> inA = NamesBelow(a);
        const std::set<std::string> inB = NamesBelow(b);
        std::set<std::string> all = inA;
        all.insert(inB.begin(), inB.end());
        for (const std::string& name : all) {
            if (!inB.contains(name))
                Differ(name, {"only in " + a.string(), {}, {}});
            else if (!inA.contains(name))
                Differ(name, {"only in " + b.string(), {}, {}});
            else
                Files(a / name, b / name, name);
        }
    }

    /// Prints the sum of it, or with --json all of it. Answers the exit status.
    int Report() const {
        if (options_.Json) {
            const Json all = {{"a", options_.A},
                              {"b", options_.B},
                              {"equal", equal_},
                              {"different", differences_},
                              {"unreadable", unreadable_}};
            // Names are bytes of the files, JSON is UTF-8.
            fmt::print("{}\n", all.dump(2, ' ', false, Json::error_handler_t::replace));
        } else {
            fmt::print("{} equal, {} different\n", equal_, differences_.size());
        }
        if (!unreadable_.empty()) return kTrouble;
        return differences_.empty() ? kEqual : kDifferent;
    }

  private:
    void Differ(const std::string& name, const FileDifference& how) {
        if (!options_.Json) fmt::print("{}: {}\n", name, how.Text);
        Json difference = {{"file", name}, {"difference", how.Text}};
        if (how.InPixels) {
            difference["line"] = how.InPixels->Line;
            difference["pixel"] = how.InPixels->Pixel;
            difference["pixels"] = how.InPixels->Count;
        }
        if (how.InBytes) {
            difference["byte"] = how.InBytes->Byte;
            difference["bytes"] = how.InBytes->Count;
        }
        differences_.push_back(std::move(difference));
    }

    const DiffOptions& options_;
    PrintedShapes printed_;
    std::size_t equal_ = 0;
    Json differences_ = Json::array();
    Json unreadable_ = Json::array();
};

int DiffPaths(const DiffOptions& options) {
    const fs::path a = options.A;
    const fs::path b = options.B;
    std::error_code error;
    for (const fs::path& path : {a, b})
        if (!fs::exists(path, error))
            throw HostError(kUsage, fmt::format("{} does not exist", path.string()));
    const bool folders = fs::is_directory(a, error);
    if (folders != fs::is_directory(b, error))
        throw HostError(kUsage,
                        fmt::format("{} is a folder and {} is none", (folders ? a : b).string(),
                                    (folders ? b : a).string()));
    Comparison comparison(options);
    if (folders)
        comparison.Folders(a, b);
    else
        comparison.Files(a, b, a.string());
    return comparison.Report();
}

/// Whatever stops the comparison is trouble: the status of a failure would say "different".
int Diff(const DiffOptions& options) {
    try {
        return DiffPaths(options);
    } catch (const std::bad_alloc&) {
        throw HostError(kUsage, "out of memory");
    }
}

}  // namespace

void AddDiffCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("diff", "Compare two output folders, or two files, channel by channel", Diff);
    command.add_option("A", options.A, "A folder or file")->required()->type_name(kPathArgument);
    command.add_option("B", options.B, "Another")->required()->type_name(kPathArgument);
    AddRawShapeOptions(command, options.Raw);
    command.add_flag("--json", options.Json, "Print JSON");
    AddHelp(
        command,
        "Of channels it says the first line and pixel that differ, counted from 0, and how many\n"
        "pixels do; of all other files, and of raw channels whose width is not known, the same\n"
        "of bytes. Exit status: 0 equal, 1 different, 2 something cannot be read.",
        {"driverhost diff printed printed",
         "driverhost diff printed/poster reprinted/poster  # status 1: a channel differs",
         "driverhost diff printed/poster/poster_C.tif reprinted/poster/poster_C.tif  # status 1",
         "driverhost diff printed reprinted --json  # status 1"});
}
