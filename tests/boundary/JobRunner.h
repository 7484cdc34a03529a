#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "BaseFolder.h"
#include "BoundaryHost.h"
#include "ContainerMaker.h"
#include "ModelMaker.h"

/// What a job file says.
struct JobChoices {
    std::string Model = kModelName;
    int16_t ColorMode = 0;
    float XResolution = 300;
    float YResolution = 600;
    DriverOptionBlock Options{};
};

/// The 3940 bytes of a job file.
std::string JobFileBytes(const JobChoices& choices);

/// The port kind that the driver serves.
inline constexpr int32_t kFilePort = 256;

/// One job on a driver.
class Job {
  public:
    Job(const Driver& driver, const std::filesystem::path& jobFile);

    int32_t Open();
    int32_t Port(const std::filesystem::path& folder, const std::string& sourceName);
    int32_t Step();
    /// Steps until the job has ended; the answers.
    std::vector<int32_t> Run();
    /// Open, Port and Run; whether every answer was 1 and the job ended.
    bool Print(const std::filesystem::path& folder, const std::string& sourceName);
    bool HasEnded() const { return Status.JobState == JobStatusRecord::kJobEnded; }

    JobStatusRecord Status{};
    OutputSink Output;

  private:
    const Driver& driver_;
};

/// A base folder and a driver; each test gets its own.
class BoundaryTest : public ::testing::Test {
  protected:
    /// A job whose job file and container are written from the choices and pages.
    Job MakeJob(const std::vector<Page>& pages, const JobChoices& choices = {},
                const AlterDirectory& alter = {});
    /// Installs the model and prints the pages as "Proof.ps" into the output folder.
    bool Print(const Model& model, const std::vector<Page>& pages);
    /// Bytes of a file below the output folder.
    std::string Output(const std::string& name) const { return ReadText(folder.Out() / name); }
    std::filesystem::path JobFile() const { return folder.Jobs() / "job"; }
    std::filesystem::path Container() const { return folder.Jobs() / "job.pages.tif"; }

    BaseFolder folder;
    Driver driver;
};

/// What the log says of each failed job step.
inline constexpr const char* kStepLogLine =
    "E PrinterDriver\\Common\\Xsrc\\ABasePrinterDriverImp(114): Exception";

/// Bytes of one line of a channel of the page: its deepest separation, padded to 32 pixels.
std::size_t LineBytes(const Page& page);
/// What a separation's channel file holds, bottom line first for printers of that direction.
std::string ChannelBytes(const Page& page, std::size_t separation, bool bottomFirst = false);
/// What the file of a channel without a separation holds.
std::string BlankBytes(const Page& page);

/// A TIFF channel as an imaging tool sees it.
struct TiffChannel {
    uint32_t Width = 0;
    uint32_t Height = 0;
    uint16_t Bits = 0;
    uint16_t Samples = 0;
    uint16_t Photometric = 0;
    uint16_t Compression = 0;
    uint16_t ResolutionUnit = 0;
    float XResolution = 0;
    float YResolution = 0;
    std::string Data;
};

/// Nothing when the file is no readable TIFF or holds more than one image.
std::optional<TiffChannel> ReadTiff(const std::filesystem::path& path);
