#pragma once

#include <cstdint>
#include <memory>

#include "PrinterDriver/Common/Xsrc/ABasePrinterDriver.h"
#include "PrinterDriver/Common/Xsrc/JobRecords.h"
#include "PrinterDriver/Common/Xsrc/JobReport.h"
#include "host/Records.h"
#include "host/ZEJob.h"

/// The output writer's first layer: print settings, the job's records, bytes streamed to the host,
/// and the default answer of every operation that the driver forwards to. Operations stand in
/// interface order. They answer 1 and 0, or raise a JobFault where they do job work.
class ABaseRTL {
  public:
    virtual ~ABaseRTL();
    ABaseRTL(const ABaseRTL&) = delete;
    ABaseRTL& operator=(const ABaseRTL&) = delete;

    /// Opens the job that `job` describes, replacing an earlier one. The writer reads `job`,
    /// `output` and `options` until the job is released; it owns none of them.
    virtual int32_t OpenJob(JobContext* job, int32_t reserved, HostOutput* output,
                            DriverOptionBlock* options) = 0;
    /// Closes and releases everything of the job.
    virtual int32_t AbortJob() = 0;
    /// One unit of work of the job.
    virtual int32_t ProcessJobStep() = 0;
    /// Dots per inch that the device asks for at least.
    virtual int32_t GetDeviceResolution(int32_t* x, int32_t* y) = 0;
    /// Repeats the pixels of a packed row, see RepackRow. Source and destination are row buffers.
    virtual void RepackBits(int32_t bits, int64_t bitCount, const uint8_t* source, int32_t repeat,
                            int64_t* bitPosition, uint8_t* destination);
    /// Puts a percentage (cut to 0 to 100) into the job's status text.
    virtual void ReportProgress(int32_t percent);
    /// Streams bytes to the host's output object through a buffer of 1 MiB; a nonzero `flush`
    /// hands over everything at once. Answers `count`.
    virtual int32_t WriteNdata(const void* data, int32_t count, int32_t flush);
    /// Sets the job's status text (cut to its field) and its kind.
    virtual void SetStatusText(int32_t kind, const char* text);
    virtual int32_t DecodeDriverOptionsDefault(const char* text, DriverOptionBlock* options,
                                               PrintSettings* settings);
    /// Restores an option block from the host's text form.
    virtual int32_t DecodeDriverOptions(const char* text, DriverOptionBlock* options,
                                        PrintSettings* settings);
    virtual int32_t ReservedQuery6();
    virtual int32_t GetDriverId() = 0;
    virtual int32_t ReservedQuery3();
    virtual int32_t IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                                       PrintSettings* settings) = 0;
    virtual int32_t GetColorantList(int32_t position, ColorantInfoList* list) = 0;
    virtual int32_t FindColorModeID(const char* name) = 0;
    virtual int32_t GetDefaultColorMode(char* name, PrintSettings* settings) = 0;
    /// The screens for the settings' manufacturer, model and choices, or for whom no file says
    /// anything the built-in ones. 0 only without a record.
    virtual int32_t GetScreeningParams(ScreeningParams* parameters, PrintSettings* settings);
    virtual int32_t ReservedQuery8();
    virtual int32_t ReservedQuery9();
    virtual int32_t GetMediaList(PrintSettings* settings, CapabilityList* list,
                                 int32_t* defaultMedia);
    virtual int32_t GetPrintModeList(PrintSettings* settings, CapabilityItem* media,
                                     CapabilityList* list, int32_t* defaultPosition);
    virtual int32_t GetResolutionList(PrintSettings* settings, CapabilityItem* media,
                                      CapabilityItem* printMode, ResolutionList* list,
                                      HostArgument further);
    virtual void FillSizeRecord(ResolutionItem* record, double x, double y, int32_t identifier,
                                const char* name);
    virtual int32_t ReservedMediaQuery1(PrintSettings* settings, CapabilityItem* media,
                                        HostArgument a, HostArgument b, HostArgument c,
                                        HostArgument d);
    virtual int32_t ReservedQuery27();
    virtual int32_t ReservedQuery12();
    virtual int32_t ReservedQuery13();
    virtual int32_t ReservedMediaQuery2(PrintSettings* settings, CapabilityItem* media,
                                        HostArgument a, int32_t value, int32_t* out);
    virtual int32_t ReservedQuery5();
    virtual int32_t OpenPort(const char* folder, const char* sourceName);
    virtual int32_t ReservedQuery14();
    virtual int32_t ReservedQuery15();
    virtual int32_t AreOptionsDifferent(DriverOptionBlock* a, DriverOptionBlock* b);
    virtual int32_t ReservedQuery16();
    virtual int32_t ReservedQuery17();
    virtual int32_t EnsureDriverOptions(DriverOptionBlock* options);
    virtual int32_t ReservedQuery18(HostArgument a, int32_t* b);
    virtual int32_t ReservedQuery19();
    virtual int32_t ReservedQuery20();
    virtual int32_t ReservedQuery21(HostArgument a, int32_t value, int32_t* out);
    virtual int32_t ReservedQuery22();
    virtual int32_t ReservedQuery23();
    virtual int32_t ReservedQuery24();
    /// The output levels of the settings' colour mode: evenly spaced ones, and over them what the
    /// model's file says. 1 when a file supplied them all. Without a loaded description the record
    /// comes with the counts to look for.
    virtual int32_t GetDitherParams(const char* modelName, const char* manufacturerName,
                                    PrintSettings* settings, DitherParams* parameters);
    /// ReservedMediaQuery1 without the fifth argument.
    virtual int32_t ReservedMediaQuery3(PrintSettings* settings, CapabilityItem* media,
                                        HostArgument c, HostArgument d, HostArgument e,
                                        HostArgument f, HostArgument g);
    virtual int32_t ReservedQuery26();
    /// Keeps a copy of the settings; null changes nothing.
    virtual int32_t SetPrintSettings(PrintSettings* settings);

    const PrintSettings& StoredSettings() const { return settings_; }
    /// Where every failure and doubt of the job is said; the driver begins it with each job.
    JobReport& Report() { return report_; }

  protected:
    ABaseRTL();

    std::unique_ptr<ZEJob> container_;  ///< null when no job is open
    AImage* pageImage_ = nullptr;       ///< of the current page; the container owns it
    HostOutput* output_ = nullptr;
    JobContext* job_ = nullptr;  ///< borrowed from the driver; null until OpenJob
    JobReport report_;

  private:
    void WriteToHost(const void* data, int32_t count, int line, const char* message);
    void FlushStreamBuffer(int line);

    std::unique_ptr<uint8_t[]> streamBuffer_;
    int32_t streamBytes_ = 0;
    PrintSettings settings_;
};
