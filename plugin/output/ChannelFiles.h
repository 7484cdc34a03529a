#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "PrinterDriver/Common/Xsrc/JobReport.h"
#include "host/AFilePath.h"
#include "host/AString.h"
#include "host/ExportBitmap.h"
#include "plugin/output/OutputNames.h"
#include "plugin/output/PageFolder.h"
#include "plugin/output/ReversedData.h"

/// What all channel files of a page share.
struct ChannelShape {
    int32_t lineBytes = 0;
    int32_t heightLines = 0;
    int32_t bits = 0;        ///< per pixel
    double xResolution = 0;  ///< dots per inch
    double yResolution = 0;
    bool bottomLineFirst = false;
    bool lineInterleaved = false;  ///< the lines of all channels come by turns
};

/// The channel files of a page. In plane order one is open at a time, and the next one completes
/// it; line-interleaved pages hold all of theirs open. Bottom-line-first channels gather their
/// lines in a temporary file and go out when they are complete. Every failure is told to the job's
/// report; that of an output raises kOutputFailed.
class ChannelFiles {
  public:
    /// Forgets an earlier page; `report` and `folder` are borrowed for the page.
    void StartPage(JobReport& report, const ChannelShape& shape, const PageFolder& folder,
                   ChannelNaming naming, int32_t channelCount);

    /// The files that are opened from here on have other names.
    void UseNaming(ChannelNaming naming) { naming_ = std::move(naming); }

    /// Whether a channel is written already, or is being written.
    bool IsWritten(int32_t channel) const;
    void MarkWritten(int32_t channel);

    /// Completes the file before it and opens the file of `channel` (-1: the job name; `name`: a
    /// pattern in place of the channel's own) for the lines of `separation`. False when lines of
    /// the file before it were lost, see FlushReversed.
    [[nodiscard]] bool Open(uint32_t separation, int32_t channel, const AString& name);
    /// Takes the next line of the separation; false when it cannot be written.
    bool WriteLine(uint32_t separation, const uint8_t* line);
    /// Whether the lines are gathered for now, and a failed WriteLine was the gathering's.
    bool IsGathering() const { return reversed_.IsOpen(); }
    /// Sends out the lines of a bottom-line-first channel. False when some were lost on their way
    /// into the temporary file.
    [[nodiscard]] bool FlushReversed();

    /// Writes the plane of a channel that received no line; false when a line cannot be written.
    /// For channel -1 `name` is the pattern, and the job's name where it is empty.
    [[nodiscard]] bool WriteBlank(int32_t channel, const AString& name, uint8_t fill);
    /// Writes a file whose every byte is `fill`; false when a line cannot be written.
    [[nodiscard]] bool WritePlane(const AString& fileName, uint8_t fill);
    /// Closes what is open and opens a file for the lines of a further plane, which the following
    /// AddPlaneLine calls bring in output order. A line that it does not take is a doubt.
    void OpenPlane(const AString& fileName);
    void AddPlaneLine(const uint8_t* line);
    /// Completes and closes what is open.
    void Close();
    /// Removes the temporary file and closes what is open as it stands. Allocates nothing.
    void Abandon() noexcept;

  private:
    struct OpenChannel {
        uint32_t separation = 0;
        AString path;
        std::unique_ptr<ExportBitmap> exporter;
    };

    OpenChannel Create(uint32_t separation, const AString& fileName) const;
    OpenChannel* Find(uint32_t separation);
    void StartGathering(const OpenChannel& channel);
    void NoteShort(const OpenChannel& channel);

    JobReport* report_ = nullptr;
    ChannelShape shape_;
    const PageFolder* folder_ = nullptr;
    ChannelNaming naming_;
    AFilePath reversedPath_;
    std::vector<uint8_t> written_;  ///< one flag a channel
    std::vector<OpenChannel> open_;
    ReversedData reversed_;
};
