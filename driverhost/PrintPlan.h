#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/Container.h"
#include "driverhost/JobTiles.h"
#include "driverhost/ModelRules.h"
#include "driverhost/SideFiles.h"
#include "host/Records.h"

/// A job as the driver is told to print it.
struct PrintOrder {
    const JobFileHeader& Header;
    const std::vector<ContainerPage>& Pages;
    const std::vector<ColorantInfo>& Colorants;  ///< of the job's colour mode
    std::string SourceName;
    JobTiles Tiles;
    int32_t Copies = 1;
    std::string Thumbnail;  ///< empty: none
};

/// The files of one page; paths are relative to the job's folder.
struct PlannedPage {
    ContainerPage Shape;
    std::string Folder;                 ///< of its own; "" when the job's folder serves
    std::vector<std::string> Channels;  ///< the colour mode's, then white
    std::vector<SideFile> Sides;

    /// Bytes of one line of one channel: every bit plane is padded to whole 32-pixel words.
    int64_t LineBytes() const;
};

/// Every file that the driver writes for a job, by the rules of its model.
struct PrintPlan {
    std::string JobName;
    bool MakesFolder = false;  ///< a folder of the job's own, which the driver names
    bool BottomLineFirst = false;
    bool LineInterleaved = false;
    int32_t WhiteType = -1;     ///< the white treatment in effect; -1: none
    bool GathersWhite = false;  ///< the union of a page's separations
    std::vector<PlannedPage> Pages;
    std::vector<SideFile> Sides;  ///< that stand once in the job's folder

    /// The paths of all of a page's files, or of the job's own, without doubles.
    std::vector<std::string> PathsOf(const PlannedPage& page) const;
    std::vector<std::string> OwnPaths() const;
    std::vector<std::string> AllPaths() const;
};

/// `rules` hold the job's white choice. Throws HostError for a thumbnail that is gone.
PrintPlan PlanPrint(const PrintOrder& order, ModelRules& rules);
