#pragma once

#include <cstdint>
#include <memory>

#include "host/AColorant.h"
#include "host/AFilePath.h"
#include "host/Arrays.h"
#include "host/ContainerFailure.h"

/// Which container file of a job is meant.
enum eHardCodePrefix : int32_t {
    kFallbackContainer = 0,   ///< job path + ".tif"
    kPreferredContainer = 2,  ///< job path + ".pages.tif"
};

/// One page of a job: separations of equal size, read row by row.
class AImage {
  public:
    virtual ~AImage() = default;

    /// Appends the page's separations in the container's order. They belong to the image.
    virtual void GetSeparations(AObList<AColorant>& separations) = 0;
    virtual int32_t Width() const = 0;  ///< pixels
    virtual int32_t Rows() const = 0;
    /// Reads one packed row, most significant bit first, (width x depth + 7) / 8 bytes. `count`
    /// is always 1 and `reserved` 0. 0 when the data is damaged or missing; the buffer's content
    /// is then undefined. Rows are read fastest in ascending order within a separation.
    virtual int32_t ReadRow(uint32_t separation, int32_t row, int32_t count, uint8_t* buffer,
                            int32_t reserved) = 0;
    /// The same bytes where they were read to, uncopied: they stay there until the next row is
    /// asked for. Null when the data is damaged or missing.
    virtual const uint8_t* Row(uint32_t separation, int32_t row) = 0;
    /// Why the last row that could not be read could not.
    virtual const ContainerFailure& Failure() const = 0;
};

/// The job container: yields a job's pages.
class ZEJob {
  public:
    explicit ZEJob(int32_t reserved);
    ~ZEJob();
    ZEJob(const ZEJob&) = delete;
    ZEJob& operator=(const ZEJob&) = delete;

    static AFilePath GetFileName(eHardCodePrefix kind, const AFilePath& jobPath);

    /// Opens the container and finds its pages. A file that is no container leaves a job without
    /// pages: every GetImage answers null.
    int32_t Load(const AFilePath& container);
    /// Opens the page data; `mode` is always 1 (read).
    int32_t OpenData(int32_t mode);
    /// The page, null when it has none. It belongs to the job and lives until the next GetImage,
    /// Flush or the job's end.
    AImage* GetImage(uint32_t pageIndex);
    /// Releases the page data after a page.
    void Flush();
    /// Closes the container's file, which can be moved or deleted from here on. No page has an
    /// image any more; the page count stays.
    void Close();
    /// Why the last Load, OpenData or GetImage that answered 0 or null did.
    const ContainerFailure& Failure() const { return failure_; }

    int32_t PageCount = 0;

  private:
    struct Container;
    int32_t Fail(const ContainerFailure& failure);

    std::unique_ptr<Container> container_;
    ContainerFailure failure_;
};
