#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/Capabilities.h"

/// What `run` notes of a job beside its output folder's files: what a raw channel file cannot say,
/// and whose files these are. The file is NAME.print.json in the output folder, NAME being the job
/// folder's or the job's name; it holds no times and no paths outside the folder. It stands there
/// before the first page, as not complete and with every file that is to come.
struct PrintRecord {
    struct Page {
        int64_t WidthPixels = 0;
        int64_t Lines = 0;
        int32_t Bits = 1;
        std::vector<std::string> Files;  ///< relative to the output folder
    };

    std::string SourceName;  ///< as the driver was told
    std::string Model;
    PrintChoice Choice;
    int32_t WhiteType = -1;  ///< the white treatment in effect; -1: none
    double XResolution = 0;  ///< dots per inch of what was printed
    double YResolution = 0;
    bool Complete = false;  ///< the job ran to its end and no file is missing or short
    std::vector<Page> Pages;
    std::vector<std::string> Files;  ///< of the job, beside its pages'

    /// Of the job and of its pages.
    std::vector<std::string> AllFiles() const;
};

/// Where a new record named `name` goes: NAME.print.json, or NAME.2.print.json and so on where
/// that file is there already.
std::filesystem::path NewPrintRecordPath(const std::filesystem::path& folder,
                                         const std::string& name);

/// Complete, or the file stays as it was. Throws HostError when it cannot be written.
void WritePrintRecord(const std::filesystem::path& path, const PrintRecord& record);

/// Reads the record `path`. Throws HostError for a file that is damaged or none.
PrintRecord ReadPrintRecord(const std::filesystem::path& path);

/// The records in an output folder, by name.
std::vector<std::filesystem::path> FindPrintRecords(const std::filesystem::path& folder);
