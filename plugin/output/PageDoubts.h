#pragma once

#include <vector>

#include "PrinterDriver/Common/Xsrc/JobRecords.h"
#include "PrinterDriver/Common/Xsrc/JobReport.h"
#include "description/CDynamic.h"
#include "description/ModelOutputSettings.h"
#include "host/AFilePath.h"

// What is to be said of a job and of a page before anything of it is written. In strict mode the
// first doubt that is met ends the job.

/// Of a job that is being opened: whether its model and colour mode are those that the description
/// answers for.
void NoteJobDoubts(JobReport& report, CDynamic& description, const ModelOutputSettings& model,
                   const JobContext& job);

/// Of a page: separations that are not output, or not as deep as others, and a colour mode of the
/// host's that cannot be read.
void NoteSeparationDoubts(JobReport& report, const JobTrackRecord& track);

/// Of a page's white: a choice that the model does not offer, and a union that lacks separations.
void NoteWhiteDoubts(JobReport& report, const JobTrackRecord& track,
                     const ModelOutputSettings& model);

/// Of the files of a page: two that have one path.
void NotePathDoubts(JobReport& report, std::vector<AFilePath> files);
