#include "driverhost/TemplateOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <filesystem>

#include "PrinterDriver/Common/Xsrc/JobRecords.h"
#include "driverhost/CommandTree.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/check/Findings.h"

namespace fs = std::filesystem;

namespace {

/// Bytes of a name that the description answers.
constexpr std::size_t kNameBytes = 256;

template <class Number>
Number Parse(const std::string& name, std::string_view text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end)
        throw HostError(kUsage, fmt::format("{} is no number for {}", Quoted(text), name));
    return number;
}

}  // namespace

void AddTemplateOptions(CLI::App& command, TemplateOptions& options) {
    command
        .add_option("TEMPLATE", options.Template,
                    "The template: a file, or the name of one in the base folder")
        ->required()
        ->type_name(kFileArgument);
    command.add_option("--set", options.Values, "NAME=VALUE: the value of a keyword")
        ->allow_extra_args(false);
    command.add_option("--page", options.Job, "A job whose page gives the values")
        ->type_name(kFileArgument);
    command.add_option("--page-number", options.PageNumber, "Page of that job, from 1")
        ->capture_default_str();
}

AFilePath FindTemplate(const TemplateOptions& options, const char* folder) {
    std::error_code error;
    if (fs::exists(options.Template, error)) return AFilePath(options.Template);
    AFilePath path = AFilePath().Append("OutputDrivers").Append(folder).Append(options.Template);
    if (path.exists()) return path;
    throw HostError(kUsage,
                    fmt::format("there is no template {}, here or in {}", options.Template,
                                AFilePath().Append("OutputDrivers").Append(folder).fullPath()));
}

std::map<std::string, std::string> GivenValues(const TemplateOptions& options,
                                               const std::vector<std::string_view>& names) {
    std::map<std::string, std::string> values;
    for (const std::string& text : options.Values) {
        const std::size_t equals = text.find('=');
        const std::string name = text.substr(0, equals);
        if (equals == std::string::npos)
            throw HostError(kUsage, fmt::format("{} is not NAME=VALUE", Quoted(text)));
        if (std::find(names.begin(), names.end(), name) == names.end())
            throw HostError(kUsage,
                            fmt::format("there is no keyword {}{}; there are {}", Quoted(name),
                                        DidYouMean(name, names), fmt::join(names, ", ")));
        values[name] = text.substr(equals + 1);
    }
    return values;
}

int32_t WholeNumber(const std::string& name, std::string_view text) {
    return Parse<int32_t>(name, text);
}

double Number(const std::string& name, std::string_view text) {
    return Parse<double>(name, text);
}

JobPage ReadJobPage(const TemplateOptions& options) {
    JobPage page;
    page.Header = ReadJobHeader(options.Job);
    const std::vector<ContainerPage> pages = ReadJobPages(options.Job);
    const auto count = static_cast<int64_t>(pages.size());
    if (options.PageNumber < 1 || options.PageNumber > count)
        throw HostError(kUsage, fmt::format("the job has {} pages, and none with the number {}",
                                            count, options.PageNumber));
    page.Page = pages[static_cast<std::size_t>(options.PageNumber - 1)];
    if (page.Page.WidthPixels <= 0 || page.Page.Rows <= 0 || page.Page.Bits <= 0)
        throw HostError(kFailed, fmt::format("page {} has no size", options.PageNumber));

    CDynamic description;
    PrintSettings settings;
    std::copy_n(page.Header.PrinterName, sizeof settings.ModelName - 1, settings.ModelName);
    settings.ColorModeIndex = page.Header.ColorModeIndex;
    if (ReadModelOutputSettings(description, settings, page.Model) == 0)
        throw HostError(kFailed, fmt::format("the driver does not know the job's model {}",
                                             Quoted(settings.ModelName)));
    ColorantQuery query;
    description.GetColorantList(settings.ColorModeIndex, &query.list);
    page.ColorantCount = query.list.Count;
    char name[kNameBytes] = {};
    page.HasColorModeName = description.GetColorModeName(settings.ColorModeIndex, name) != 0;
    page.ColorModeName = name;
    return page;
}
