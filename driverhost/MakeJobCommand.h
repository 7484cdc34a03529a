#pragma once

#include <cstdint>
#include <string>

#include "driverhost/ChoiceOptions.h"

class CommandTree;

struct MakeJobOptions {
    std::string Input;
    std::string Model;
    std::string Job;
    ChoiceOptions Choice;
    std::string Manufacturer;   ///< empty: the one that the model's name begins with
    std::string Screen;         ///< "am", "fm"; empty: am as far as it can be made
    std::string Tiles;          ///< "COLUMNSxROWS"; empty: pages in one piece
    std::string White;          ///< treatment; empty: the model's default, or the earlier job's
    bool DryRun = false;        ///< `Job` may then be empty
    bool Strict = false;        ///< warnings fail too
    bool NoSpaceCheck = false;  ///< begin where the disk may be too small
    bool Force = false;         ///< files that are no job's may be replaced
    double PictureDpi = 0;      ///< 0: the picture's own
    int64_t TimeoutSeconds = 300;
    /// Most pixels of one rasteriser run. Its composite picture takes four bytes a pixel and must
    /// stay well below 4 GiB.
    int64_t BandPixels = int64_t{30000} * 30000;
};

/// Rasterises and separates artwork into a job: its file, its container and its settings, which
/// appear only when all three are complete. Throws HostError.
void MakeJob(const MakeJobOptions& options);

void AddMakeJobCommand(CommandTree& tree);
