#include "plugin/output/PageDoubts.h"

#include <algorithm>
#include <string_view>

#include "host/LogText.h"
#include "plugin/output/WhiteInk.h"

namespace {

constexpr const char* kSource = "plugin\\output\\PageDoubts";

bool IsOutput(const JobTrackRecord& track, std::size_t separation) {
    const uint32_t colorant = track.SeparationToColorant[separation];
    return colorant != kUnmatched && track.ColorantToSeparation[colorant] == separation;
}

/// Notes a doubt about the separations that `isMeant(index)` picks, by their names.
template <class IsMeant>
void NoteSeparations(JobReport& report, LogPlace place, Doubt doubt, const char* what,
                     const JobTrackRecord& track, IsMeant isMeant) {
    LogText names;
    for (std::size_t i = 0; i < track.Separations.size(); ++i) {
        if (!isMeant(i)) continue;
        if (!names.View().empty()) names << ", ";
        names << track.Separations[i]->InternalName;
    }
    if (!names.View().empty()) report.Note(doubt, place, what, names.View());
}

}  // namespace

void NoteJobDoubts(JobReport& report, CDynamic& description, const ModelOutputSettings& model,
                   const JobContext& job) {
    if (description.LoadedModelName() != job.PrinterName) {
        LogText what;
        what << "the driver holds the description of \"" << description.LoadedModelName()
             << "\", not of the job's model";
        report.Note(Doubt::kOtherModel, {kSource, __LINE__}, what.View(), job.PrinterName);
    }
    if (model.HasModelList && !model.HasModelEntry)
        report.Note(Doubt::kNoModelEntry, {kSource, __LINE__},
                    "the description has output rules, but none for the model", job.PrinterName);
    const int32_t position = job.ColorModeIndex;
    LogText mode;
    mode << job.PrinterName << ", colour mode " << position;
    if (position < 0 || position >= description.GetColorModeCount())
        report.Note(Doubt::kNoColorMode, {kSource, __LINE__},
                    "the model has no such colour mode, the job prints no channel", mode.View());
    else if (!description.LeadIdentifiersToPositions(position))
        report.Note(Doubt::kIdentifiers, {kSource, __LINE__},
                    "identifiers are not positions, channel names go to other channels",
                    mode.View());
}

void NoteSeparationDoubts(JobReport& report, const JobTrackRecord& track) {
    if (track.CustomColorModeDamaged != 0)
        report.Note(Doubt::kCustomColorMode, {kSource, __LINE__},
                    "the host's colour mode cannot be read, the job's is used", "CustomColorMode");
    NoteSeparations(report, {kSource, __LINE__}, Doubt::kNoPlace,
                    "separations without a place are not output", track,
                    [&](std::size_t i) { return !IsOutput(track, i); });
    if (track.PageChannelOrder.empty()) return;
    const uint8_t depth = track.SeparationBits[track.PageChannelOrder.front()];
    const bool differ = std::any_of(track.PageChannelOrder.begin(), track.PageChannelOrder.end(),
                                    [&](uint32_t i) { return track.SeparationBits[i] != depth; });
    if (differ)
        NoteSeparations(report, {kSource, __LINE__}, Doubt::kDepths,
                        "separations differ in depth, some are shallower than their file", track,
                        [&](std::size_t i) {
                            return IsOutput(track, i) &&
                                   track.SeparationBits[i] != track.MaximumBits;
                        });
}

void NoteWhiteDoubts(JobReport& report, const JobTrackRecord& track,
                     const ModelOutputSettings& model) {
    const int32_t chosen = model.SupportWhiteType;
    const auto& offered = model.WhiteTypeCodes;
    const int32_t type = model.EffectiveWhiteType();
    if (chosen > 0 && type == chosen &&
        std::find(offered.begin(), offered.end(), chosen) == offered.end()) {
        LogText name;
        name << "white treatment " << chosen;
        report.Note(Doubt::kWhiteNotOffered, {kSource, __LINE__},
                    "the chosen white treatment is none of the model's", name.View());
    }
    if (!IsWhiteUnion(type)) return;
    if (track.PageChannelOrder.empty() || track.PageChannelOrder.front() != 0) {
        std::string_view first;
        if (!track.Separations.empty()) first = track.Separations.front()->InternalName;
        report.Note(Doubt::kUnionLeavesOut, {kSource, __LINE__},
                    "the white union leaves separations out, the page's first is not output first",
                    first);
    }
}

void NotePathDoubts(JobReport& report, std::vector<AFilePath> files) {
    std::sort(files.begin(), files.end(), [](const AFilePath& left, const AFilePath& right) {
        return left.fullPath() < right.fullPath();
    });
    for (std::size_t i = 1; i < files.size(); ++i) {
        const AString& path = files[i].fullPath();
        if (files[i].isValid() && path == files[i - 1].fullPath())
            report.Note(Doubt::kSamePath, {kSource, __LINE__},
                        "two files of the page have one path", path);
    }
}
