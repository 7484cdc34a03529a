#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "host/Records.h"

/// Where in the source a log entry comes from: the project path without extension, its parts
/// separated by '\', and the line.
struct LogPlace {
    const char* file;
    int line;
};

/// Why a page may come out short or other than ordered although the job goes on.
enum class Doubt : uint8_t {
    kReversedData,     ///< a channel is written top line first
    kChannelLine,      ///< a channel file does not take a line; the step fails
    kShortChannel,     ///< a channel or white file lacks lines
    kWhiteUnion,       ///< the white file lacks the union's lines
    kReadyWhite,       ///< what stands ready for the white file is not the page's
    kDepths,           ///< separations of one page differ in depth
    kUnionLeavesOut,   ///< a separation is not in the white union
    kNoPlace,          ///< a separation is not output
    kCustomColorMode,  ///< the host's own colour mode cannot be read
    kNoColorMode,      ///< the model has no colour mode at the job's position
    kIdentifiers,      ///< identifiers that are not positions lead to other channels
    kNoModelEntry,     ///< the description has output rules, but none for the model
    kOtherModel,       ///< the driver holds another model's description
    kOptions,          ///< the white choice cannot be read
    kWhiteNotOffered,  ///< the white choice is none of the model's
    kSamePath,         ///< two files of a page have one path
    kSideFile,         ///< a header or ticket is not there whole
};

/// What a job has to say for itself: an entry of level E for every failure, and for every doubt,
/// which in strict mode ends the job. Every place that meets one comes here; none decides alone.
/// Allocates nothing, so that it speaks when memory is gone, too.
class JobReport {
  public:
    /// A job begins, which is named by its job file until NameJob. Reads QL_STRICT: anything but
    /// empty or "0" asks for strict mode. `status` is the host's and is borrowed for the job.
    void StartJob(std::string_view jobFile, JobStatusRecord* status);
    void NameJob(std::string_view jobName);
    /// A page begins: its doubts are said anew.
    void StartPage();
    /// The job's status record is not touched any more.
    void EndJob() { status_ = nullptr; }
    bool IsStrict() const { return isStrict_; }

    /// An entry of level E: "JOB: WHAT: SUBJECT: REASON". `subject` is a file or a name, "" for
    /// none; `systemError` the system's number for the reason, 0 where it gave none.
    void Fail(LogPlace place, std::string_view what, std::string_view subject = {},
              int systemError = 0) noexcept;
    /// The same of level W.
    void Warn(LogPlace place, std::string_view what, std::string_view subject = {},
              int systemError = 0) noexcept;
    /// The same of level E, once a page, doubt and subject. In strict mode the entry's message
    /// becomes the status text and kOutputFailed is raised.
    void Note(Doubt doubt, LogPlace place, std::string_view what, std::string_view subject = {},
              int systemError = 0);

    /// Whether an entry of level E has been written since ForgetSaid; the operations that the host
    /// calls use it to leave no failure without one.
    bool HasSaid() const { return hasSaid_; }
    void ForgetSaid() { hasSaid_ = false; }

  private:
    bool IsNew(Doubt doubt, std::string_view subject);
    void Write(char level, LogPlace place, std::string_view message) noexcept;

    char jobName_[1024] = {};
    JobStatusRecord* status_ = nullptr;
    bool isStrict_ = false;
    bool hasSaid_ = false;
    /// What was noted of this page, by doubt and subject. A page that has so many kinds of trouble
    /// needs no further entries.
    std::array<std::size_t, 64> noted_ = {};
    std::size_t notedCount_ = 0;
};
