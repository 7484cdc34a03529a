#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "boundary/BaseFolder.h"
#include "boundary/ContainerMaker.h"

/// Bytes by name. Names of folders end with '/'.
using Files = std::map<std::string, std::string>;

/// A whole job that the sweep prints again and again.
struct Scenario {
    std::string Name;
    std::string Description;  ///< of the model
    std::vector<Page> Pages;
    int32_t TileCount = 0;
    std::string CodePage{};
    Files Templates{};                       ///< below the folder of the models
    Files Before{};                          ///< that stand in the output folder
    std::vector<std::string> SideOutputs{};  ///< that a strict job may lose when the log says so
    bool HasThumbnail = false;
    bool IsEncoded = false;     ///< the description is a gzip stream
    bool EditsOptions = false;  ///< the dialog is shown before the job
};

const std::vector<Scenario>& Scenarios();

/// Makes everything that a job of the scenario reads.
void Install(const Scenario& scenario, BaseFolder& folder);
