#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "description/ModelOutputSettings.h"
#include "driverhost/Container.h"
#include "host/AFilePath.h"
#include "host/Records.h"

namespace CLI {
class App;
}

/// What the commands that fill a template in take: the template, and whose values stand for its
/// keywords.
struct TemplateOptions {
    std::string Template;             ///< a path, or a name in the base folder
    std::vector<std::string> Values;  ///< NAME=VALUE
    std::string Job;                  ///< empty: sample values
    int32_t PageNumber = 1;           ///< of the job, from 1
};

/// Adds the template, --set, --page and --page-number to a command.
void AddTemplateOptions(CLI::App& command, TemplateOptions& options);

/// The template itself: the file of that name, else the one in a folder of `OutputDrivers`. Throws
/// HostError(kUsage) when there is neither.
AFilePath FindTemplate(const TemplateOptions& options, const char* folder);

/// The values given by name. Throws HostError(kUsage) for a name that is none of `names`.
std::map<std::string, std::string> GivenValues(const TemplateOptions& options,
                                               const std::vector<std::string_view>& names);

/// The whole of `text` as a number. Throws HostError(kUsage), which names `name`.
int32_t WholeNumber(const std::string& name, std::string_view text);
double Number(const std::string& name, std::string_view text);

/// A page of a job and what its model says of it.
struct JobPage {
    JobFileHeader Header{};
    ContainerPage Page;
    ModelOutputSettings Model;
    int32_t ColorantCount = 0;
    std::string ColorModeName;
    bool HasColorModeName = false;
};

/// Reads the page that the options name. Throws HostError.
JobPage ReadJobPage(const TemplateOptions& options);
