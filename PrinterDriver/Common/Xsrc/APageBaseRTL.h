#pragma once

#include "PrinterDriver/Common/Xsrc/ABaseRTL.h"
#include "host/LogText.h"

/// The output writer's second layer: walks a job's pages, separations and rows in time slices. It
/// knows nothing about files; what happens to a row is the derived class's matter.
class APageBaseRTL : public ABaseRTL {
  public:
    ~APageBaseRTL() override;

    int32_t OpenJob(JobContext* job, int32_t reserved, HostOutput* output,
                    DriverOptionBlock* options) override;
    int32_t AbortJob() override;
    int32_t ProcessJobStep() override;
    /// In plane order: the current separation's name, its percentage and the page's.
    void ReportProgress(int32_t percent) override;
    int32_t ReservedQuery5() override;
    int32_t OpenPort(const char* folder, const char* sourceName) override;

    virtual int32_t StartPage();
    /// Maps the page's separations to the job's colorants and sizes the row buffers; 0 when the
    /// page has no image.
    virtual int32_t SetUpColorMode();
    /// Outputs rows of the current page for at most one time slice.
    virtual int32_t ProcessBandStep();
    virtual int32_t EndPage();
    virtual int32_t EndJob();
    /// Index of the page behind `current` (-1: the first), -1 after the last.
    virtual int32_t NextPage(int32_t current);
    /// Moves to the next row to output; `*separation` becomes -1 behind the last.
    virtual int32_t NextBand(int32_t* separation, int32_t* row);
    /// Outputs one row. `data` holds the row and zeros behind it, up to a row buffer's size; a row
    /// of bandBytes_ bytes has nothing behind it.
    virtual int32_t OutputBand(uint32_t separation, int32_t row, const uint8_t* data);
    virtual int32_t BeginChannel(uint32_t separation, int32_t row);
    virtual int32_t EndChannel(uint32_t separation, int32_t row);
    virtual void InitBandOrder();
    virtual void InitChannelOrder();
    /// Nonzero leaves the colorant out of the page.
    virtual int32_t SkipChannel(uint32_t colorant);

  protected:
    APageBaseRTL();

    std::unique_ptr<PageInfo> pageInfo_;     ///< replaced by each OpenJob
    std::unique_ptr<JobTrackRecord> track_;  ///< replaced by each OpenJob
    /// What OutputBand looks at of a row: source rows that fill it are handed on uncopied. 0: no
    /// row is.
    int32_t bandBytes_ = 0;

  private:
    void OpenContainer();
    void FillPageInfo();
    void StartTracking();
    int32_t StartNextPage();
    void MapSeparations();
    void ApplyDeviceResolution();
    void AllocateRowBuffers();
    bool HasCustomColorMode();
    void ReleaseImages();
    /// Narrows a size that has been computed in 64 bits; one beyond the buffers that a page may
    /// have counts as out of memory.
    int32_t PageSize(int64_t value);
    /// Says what of the container cannot be read, and why.
    void FailRead(LogText& what, const ContainerFailure& failure);
    [[noreturn]] void RaiseUnreadable(uint32_t separation);
    const uint8_t* ReadBand(uint32_t separation, int32_t row);
    void SkipToNextChannel();

    AString containerPath_;
    std::unique_ptr<uint8_t[]> rowBuffer_;
    int32_t rowBufferBytes_ = 0;
    std::unique_ptr<uint8_t[]> repeatedRowBuffer_;
};
