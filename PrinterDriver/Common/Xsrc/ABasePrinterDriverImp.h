#pragma once

#include <memory>

#include "PrinterDriver/Common/Xsrc/ABasePrinterDriver.h"
#include "PrinterDriver/Common/Xsrc/ABaseRTL.h"
#include "PrinterDriver/Common/Xsrc/JobRecords.h"

/// The driver as a host sees it: owns the job and the writer, keeps failures inside the library,
/// translates the host's special media indices, and hands the rest to the writer.
class ABasePrinterDriverImp : public ABasePrinterDriver {
  public:
    ~ABasePrinterDriverImp() override;

    int32_t OpenJob(JobStatusRecord* status, HostOutput* output) override;
    int32_t ProcessJobStep() override;
    int32_t AbortJob() override;
    int32_t ReservedQuery3() override;
    int32_t ShowDriverOptions(DriverOptionBlock* options, int32_t mode, PrintSettings* settings,
                              HWND parent) override;
    int32_t DecodeDriverOptions(const char* text, DriverOptionBlock* options,
                                PrintSettings* settings) override;
    int32_t GetDriverId() override;
    int32_t ReservedQuery5() override;
    int32_t ReservedQuery6() override;
    int32_t IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                               PrintSettings* settings) override;
    int32_t FindColorModeID(const char* name) override;
    int32_t GetColorantList(int32_t position, ColorantInfoList* list) override;
    int32_t GetScreeningParams(ScreeningParams* parameters, PrintSettings* settings) override;
    int32_t GetDefaultColorMode(char* name, PrintSettings* settings) override;
    int32_t OpenPort(const char* folder, const char* sourceName) override;
    int32_t ReservedQuery8() override;
    int32_t ReservedQuery9() override;
    int32_t GetMediaList(PrintSettings* settings, CapabilityList* list,
                         int32_t* defaultMedia) override;
    int32_t GetPrintModeList(PrintSettings* settings, CapabilityItem* media, CapabilityList* list,
                             int32_t* defaultPosition) override;
    int32_t GetResolutionList(PrintSettings* settings, CapabilityItem* media,
                              CapabilityItem* printMode, ResolutionList* list,
                              HostArgument further) override;
    int32_t ReservedMediaQuery1(PrintSettings* settings, CapabilityItem* media, HostArgument a,
                                HostArgument b, HostArgument c, HostArgument d) override;
    int32_t ReservedQuery12() override;
    int32_t ReservedQuery13() override;
    int32_t ReservedMediaQuery2(PrintSettings* settings, CapabilityItem* media, HostArgument a,
                                int32_t value, int32_t* out) override;
    int32_t ReservedQuery14() override;
    int32_t ReservedQuery15() override;
    int32_t AreOptionsDifferent(DriverOptionBlock* a, DriverOptionBlock* b) override;
    int32_t ReservedQuery16() override;
    int32_t ReservedQuery17() override;
    int32_t EnsureDriverOptions(DriverOptionBlock* options) override;
    int32_t ReservedQuery18(HostArgument a, int32_t* b) override;
    int32_t ReservedQuery19() override;
    int32_t ReservedQuery20() override;
    int32_t ReservedQuery21(HostArgument a, int32_t value, int32_t* out) override;
    int32_t ReservedQuery22() override;
    int32_t ReservedQuery23() override;
    int32_t ReservedQuery24() override;
    int32_t GetDitherParams(const char* modelName, const char* manufacturerName,
                            PrintSettings* settings, DitherParams* parameters) override;
    int32_t ReservedMediaQuery3(PrintSettings* settings, CapabilityItem* media, HostArgument c,
                                HostArgument d, HostArgument e, HostArgument f,
                                HostArgument g) override;
    int32_t ReservedQuery26() override;
    int32_t SetPrintSettings(PrintSettings* settings) override;

    virtual int32_t ReservedQuery27();
    /// The writer's identifier, -1 without a writer.
    virtual int32_t GetWriterDriverId();
    /// Reads the job file's header into the job. 0 when there is no job, or the file cannot be
    /// opened or is too short.
    virtual int32_t ReadJobHeader();

  protected:
    ABasePrinterDriverImp() = default;

    /// The media identifier that `index` stands for: -100 and -102 are the last medium of the
    /// settings' model, -101 the last but one, anything else (and a special index that the list is
    /// too short for) is itself. 0 without a writer, and `out` stays.
    int32_t ResolveMediaIndex(PrintSettings* settings, int32_t index, int32_t* out);

    std::unique_ptr<JobContext> job_;  ///< null until the first OpenJob and after a failed one
    std::unique_ptr<ABaseRTL> writer_;

  private:
    bool HasRunningJob() const { return job_ != nullptr && job_->Aborted == 0; }
    template <class Call>
    int32_t AnswerJobCall(const char* operation, Call&& call) noexcept;
    /// Says what is wrong with the job file; 0.
    int32_t FailHeader(const char* what, const char* path);
    void ReleaseJob();
    bool StartJob(JobStatusRecord* status, HostOutput* output);
    void EndJobEarly();
    PrintSettings CopySettings(PrintSettings* settings);
    CapabilityItem CopyItem(PrintSettings* settings, const CapabilityItem* item);
};
