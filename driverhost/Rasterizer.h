#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/InkPlan.h"
#include "driverhost/PdfPages.h"
#include "platform/ChildProcess.h"

/// A job holds no more: PageNumber has two 16-bit numbers.
inline constexpr std::size_t kMostDocumentPages = UINT16_MAX;

/// One band of a page to be rasterised.
struct BandRequest {
    std::string Document = "document.pdf";  ///< in the work folder
    int32_t PageNumber = 1;                 ///< counted from 1, as the rasteriser does
    double XResolution = 0;                 ///< dots per inch
    double YResolution = 0;
    int64_t WidthPixels = 0;
    int64_t PageRows = 0;
    int64_t FirstRow = 0;  ///< from the page's top
    int64_t RowCount = 0;
};

/// Runs Ghostscript on one document: without a shell, without input, in a folder of its own that
/// also holds its temporary files, and not longer than it makes progress.
class Rasterizer {
  public:
    /// `workFolder` is emptied by its owner. `timeout` is the longest time that a run may go on
    /// without writing anything. The document is taken, converted or written by others next.
    Rasterizer(const std::filesystem::path& workFolder, std::chrono::seconds timeout);

    /// The PDF that every run reads. Under a name of ours no letter of the artwork's own path can
    /// mean anything to Ghostscript.
    const std::filesystem::path& Document() const { return document_; }
    void TakePdf(const std::filesystem::path& pdf) const;
    /// Runs a PostScript program into the document. Throws HostError when it fails or shows
    /// nothing.
    void ConvertPostScript(const std::filesystem::path& program);

    /// Sizes and spot inks of all pages.
    std::vector<PdfPage> ReadPages();

    /// What the runs that read the document complained about, a line each: what of it was repaired
    /// or replaced.
    const std::vector<std::string>& DocumentComplaints() const { return documentComplaints_; }

    /// Makes the plates of one band in `folder`, which must exist: one 8-bit TIFF per ink, named
    /// plate(INK).tif, and plate(Gray).tif. Answers what the runs complained about beyond that, a
    /// line each. A success means that they ended well, not that the plates are whole.
    std::vector<std::string> MakePlates(const BandRequest& band, const InkPlan& plan,
                                        const std::filesystem::path& folder);

  private:
    std::vector<std::string> CommonArguments() const;
    void Link(const std::filesystem::path& from, const std::filesystem::path& to) const;
    void Separate(const BandRequest& band, const InkPlan& plan, const std::filesystem::path& folder,
                  const char* device);
    std::string RunToEnd(const std::vector<std::string>& arguments,
                         const std::filesystem::path& folder, const std::string& what);
    void WaitFor(ChildProcess& process, const std::string& what);
    void StopWhenFull(const std::string& what) const;
    [[noreturn]] void ThrowDiskFull(const std::string& what) const;
    void NoteDocument(const std::vector<std::string>& complaints);

    std::filesystem::path workFolder_;
    std::filesystem::path document_;
    std::chrono::seconds timeout_;
    std::uintmax_t mostBytes_ = UINTMAX_MAX;  ///< in the work folder while a run goes on
    std::vector<std::string> documentComplaints_;
    std::vector<std::string> complaints_;  ///< of the plates that are made
};
