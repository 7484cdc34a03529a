#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "driverhost/TiffFile.h"

/// One directory of the job container: one separation of one page.
struct SeparationHeader {
    int64_t WidthPixels = 0;
    int64_t Rows = 0;
    int32_t Bits = 1;        ///< 1, 2, 4 or 8 per pixel
    double XResolution = 0;  ///< dots per inch
    double YResolution = 0;
    int32_t Page = 0;  ///< from 0
    int32_t PageCount = 1;
    std::string InternalName;
    std::string DisplayName;
};

/// Writes a job container separation by separation, row by row. Throws HostError when a write
/// fails.
class ContainerWriter {
  public:
    /// `expectedBytes` of rows decide whether the file needs 64-bit offsets.
    ContainerWriter(const std::filesystem::path& path, int64_t expectedBytes);

    void BeginSeparation(const SeparationHeader& header);
    /// One packed row; the buffer's content is undefined afterwards.
    void WriteRow(std::span<uint8_t> packed);
    void EndSeparation();
    /// Everything is on its way to the disk when this returns.
    void Close();

  private:
    [[noreturn]] void Fail() const;

    std::filesystem::path path_;
    TiffFile tiff_;
    uint32_t row_ = 0;
};

/// What a job container says of one of its pages.
struct ContainerPage {
    int64_t WidthPixels = 0;
    int64_t Rows = 0;
    int32_t Bits = 0;        ///< of its deepest separation
    double XResolution = 0;  ///< dots per inch, as its last separation says; 0: not said
    double YResolution = 0;
    std::vector<std::string> Separations;  ///< internal names, in order
};

/// Reads the pages' sizes and separations. Pages whose directories are missing or unreadable have
/// size 0: the driver is the one to refuse them. Throws HostError for a file that is no container.
std::vector<ContainerPage> ReadContainerPages(const std::filesystem::path& path);

/// The pages of a job's container, the one beside it or the one of the older name. Throws
/// HostError when it is missing or none.
std::vector<ContainerPage> ReadJobPages(const std::filesystem::path& job);

/// Whether a TIFF file is a job container: its first directory names a separation or a page.
bool IsContainer(const std::filesystem::path& path);
