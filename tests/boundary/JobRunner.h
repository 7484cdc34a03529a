#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "BaseFolder.h"
#include "BoundaryHost.h"
#include "ContainerMaker.h"
#include "ModelMaker.h"
#include "SystemStandIns.h"

using Texts = std::vector<std::string>;

/// What a job file says.
struct JobChoices {
    int16_t ColorMode = 0;
    float XResolution = 300;
    float YResolution = 600;
    DriverOptionBlock Options{};
    const char* PrinterName = kModelName;
};

/// The 3940 bytes of a job file.
std::string JobFileBytes(const JobChoices& choices = {});

/// The port kind that the driver serves.
inline constexpr int32_t kFilePort = 256;

/// One job on a driver.
class Job {
  public:
    Job(const Driver& driver, const std::filesystem::path& jobFile);

    int32_t Open() { return driver_.Call(kOpenJob, &Status, static_cast<HostOutput*>(&output_)); }
    int32_t Port(const std::filesystem::path& folder, const std::string& sourceName = "Proof.ps") {
        return driver_.Call(kOpenPort, folder.c_str(), sourceName.c_str());
    }
    int32_t Step() { return driver_.Call(kProcessJobStep); }
    /// Steps until the job has ended; the answers, a digit each.
    std::string Run();
    bool HasEnded() const { return Status.JobState == JobStatusRecord::kJobEnded; }

    JobStatusRecord Status{};

  private:
    const Driver& driver_;
    OutputSink output_;
};

/// Whether the answers are those of a job that was printed.
bool IsPrinted(const std::string& answers);

/// A base folder and a driver; each test gets its own. However slow the machine and however small
/// its disk, time stands still and there is room, but where a test says otherwise.
class BoundaryTest : public ::testing::Test {
  protected:
    /// Makes a model known, to a new driver: a driver keeps the description that it has read.
    void Install(const std::string& description);
    void Install(int colourCount, const std::string& outputRules,
                 const std::string& extension = "raw") {
        Install(Describe(NumberedModel(colourCount, outputRules, extension)));
    }
    /// A job whose job file and container are written from the choices and pages.
    Job MakeJob(const std::vector<Page>& pages, const JobChoices& choices = {},
                const AlterDirectory& alter = {});
    /// Such a job into the output folder, before its first step.
    Job StartJob(const std::vector<Page>& pages, const std::string& sourceName = "Proof.ps",
                 const JobChoices& choices = {});
    bool Print(const std::vector<Page>& pages, const std::string& sourceName = "Proof.ps",
               const JobChoices& choices = {}) {
        return IsPrinted(StartJob(pages, sourceName, choices).Run());
    }
    void EmptyOutputFolder();
    /// The failed steps that the log tells of; each has an entry before it that says why.
    std::size_t FailedSteps() const;
    /// Bytes of a file below the output folder.
    std::string Output(const std::string& name) const { return ReadText(folder.Out() / name); }
    std::filesystem::path JobFile() const { return folder.Jobs() / "job"; }
    std::filesystem::path Container() const { return folder.Jobs() / "job.pages.tif"; }

    BaseFolder folder;
    std::unique_ptr<Driver> driver = std::make_unique<Driver>();

  private:
    StandIn stillClock_{clockStepMs, 0};
    StandIn largeDisk_{freeSpaceBytes, int64_t{1} << 60};
};

/// What the log says of each failed job step.
inline constexpr const char* kStepLogLine =
    "E PrinterDriver\\Common\\Xsrc\\ABasePrinterDriverImp(114): Exception";

/// Bytes of one line of a channel of the page: its deepest separation, padded to 32 pixels.
std::size_t LineBytes(const Page& page);
/// What a colorant's channel holds: the last separation of its name in any letter case, bottom
/// line first for printers of that direction; zeros when there is none.
std::string ChannelBytes(const Page& page, const std::string& colorant, bool bottomFirst = false);

/// The rows of a TIFF channel as an imaging tool reads them; "" when it cannot, or when the file is
/// not of 300 by 600 dpi.
std::string TiffRows(const std::filesystem::path& path);

/// What a shell command prints on both outputs.
std::string PrintedBy(const std::string& command);
