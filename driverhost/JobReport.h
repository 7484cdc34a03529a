#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "driverhost/DriverWords.h"
#include "driverhost/HostError.h"
#include "driverhost/OutputFiles.h"
#include "driverhost/PageCheck.h"
#include "driverhost/PrintRecord.h"

/// How a job came out.
enum class JobState {
    kNotRun,      ///< an interrupt came before it
    kComplete,    ///< everything is there
    kIncomplete,  ///< what lies in its folders must not be printed
    kAborted,     ///< interrupted; its folders are incomplete too
    kFailed,      ///< it left nothing behind
};

/// What is known of a job after its run.
struct JobReport {
    std::string Job;  ///< as the user names it
    std::string Model;
    std::string SourceName;
    JobState State = JobState::kNotRun;
    /// The status of a program that ran this job alone.
    ExitStatus Status = kAborted;
    std::string Message;            ///< why it is not complete; empty when it is
    std::set<std::string> Folders;  ///< that it wrote into, relative to the output folder
    Listing Files;
    std::vector<PrintRecord::Page> Pages;  ///< that were begun
    std::vector<PageFaults> Faults;        ///< of each of these
    std::vector<std::string> SideFaults;   ///< of files that the job promises once
    std::vector<DriverWord> Words;         ///< what the driver said beside its answers
    double Seconds = 0;

    /// Names the fault; what lies on disk then decides between kIncomplete and kFailed.
    void Fail(ExitStatus status, const std::string& message);
    /// Whether a file that it promises is missing or not whole.
    bool AnyFault() const;
    std::uintmax_t Bytes() const;
    double BytesPerSecond() const;
};

/// Prints a job's files and its speed on standard output, its faults on standard error.
void PrintReport(const JobReport& report, const std::filesystem::path& folder, bool nameJob);

/// Prints all of it, with the sum of each file, as one JSON object.
void PrintReportsAsJson(const std::vector<JobReport>& reports, const std::filesystem::path& folder,
                        int exitStatus);
