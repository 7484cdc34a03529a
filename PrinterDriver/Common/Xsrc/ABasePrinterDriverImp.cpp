#include "PrinterDriver/Common/Xsrc/ABasePrinterDriverImp.h"

#include "PrinterDriver/Common/Xsrc/AFM_File.h"
#include "host/QL_LOG.h"
#include "host/Text.h"
#include "platform/CodePage.h"
#include "platform/SystemError.h"

namespace {

constexpr const char* kSource = "PrinterDriver\\Common\\Xsrc\\ABasePrinterDriverImp";
/// Line that the entry about a failed step has always named; hosts look for it.
constexpr int kStepFailedLine = 114;
constexpr int32_t kLastMedium = -100;
constexpr int32_t kSecondToLastMedium = -101;
constexpr int32_t kLastMediumToo = -102;

/// What a job operation or a forwarded one answers when the writer throws: a JobFault,
/// std::bad_alloc, whatever a library threw. Nothing may leave the library.
template <class Call>
int32_t AnswerOr(int32_t failure, Call&& call) noexcept {
    try {
        return call();
    } catch (...) {
        return failure;
    }
}

void CopyHeader(const JobFileHeader& header, JobContext& job) {
    job.XResolution = header.XResolution;
    job.YResolution = header.YResolution;
    job.XResolutionWhole = header.XResolutionWhole;
    job.YResolutionWhole = header.YResolutionWhole;
    job.ColorModeIndex = header.ColorModeIndex;
    job.Options = header.Options;
    CopyText(job.PrinterName, sizeof job.PrinterName,
             WholeFieldText(header.PrinterName, sizeof header.PrinterName));
    CopyText(job.OriginalFileName, sizeof job.OriginalFileName,
             WholeFieldText(header.OriginalFileName, sizeof header.OriginalFileName));
}

}  // namespace

ABasePrinterDriverImp::~ABasePrinterDriverImp() {
    writer_.reset();  // it still reads the job
    job_.reset();
}

/// Runs a job operation, whose answer 0 never goes without an entry that says what failed.
template <class Call>
int32_t ABasePrinterDriverImp::AnswerJobCall(const char* operation, Call&& call) noexcept {
    JobReport& report = writer_->Report();
    report.ForgetSaid();
    const char* what = "it failed";
    try {
        if (call() != 0) return 1;
    } catch (const std::bad_alloc&) {
        what = "out of memory";
    } catch (...) {  // a JobFault, or what a library threw
    }
    if (!report.HasSaid()) report.Fail({kSource, __LINE__}, operation, what);
    return 0;
}

int32_t ABasePrinterDriverImp::OpenJob(JobStatusRecord* status, HostOutput* output) {
    ReleaseJob();
    if (writer_ == nullptr || status == nullptr || output == nullptr) {
        QL_LOG(kSource, __LINE__, 'E', "OpenJob: no writer, no job status record or no output");
        return 0;
    }
    JobReport& report = writer_->Report();
    report.StartJob(FieldText(status->JobFilePath, sizeof status->JobFilePath), status);
    if (!IsCodePageKnown())
        report.Fail({kSource, __LINE__},
                    "QL_CODE_PAGE names a code page that the system does not know, "
                    "UTF-8 serves");
    if (AnswerJobCall("OpenJob", [&] { return StartJob(status, output) ? 1 : 0; }) != 0) return 1;
    if (job_ != nullptr && job_->Status != nullptr) {
        job_->Status->JobState = JobStatusRecord::kJobEnded;
    }
    ReleaseJob();
    return 0;
}

bool ABasePrinterDriverImp::StartJob(JobStatusRecord* status, HostOutput* output) {
    job_ = std::make_unique<JobContext>();
    job_->Status = status;
    return ReadJobHeader() != 0 && writer_->OpenJob(job_.get(), 0, output, &job_->Options) != 0;
}

void ABasePrinterDriverImp::ReleaseJob() {
    if (writer_ != nullptr) {
        AnswerOr(0, [&] { return writer_->AbortJob(); });
        writer_->Report().EndJob();
    }
    job_.reset();
}

int32_t ABasePrinterDriverImp::ReadJobHeader() {
    if (job_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        AFM_File file;
        JobFileHeader header;
        char path[sizeof job_->Status->JobFilePath + 1];
        CopyText(path, sizeof path,
                 FieldText(job_->Status->JobFilePath, sizeof job_->Status->JobFilePath));
        ForgetSystemError();
        if (file.Open(path, 0) == 0) return FailHeader("the job file cannot be opened", path);
        constexpr auto kHeaderBytes = static_cast<int32_t>(sizeof header);
        if (file.Read(&header, kHeaderBytes, 0, 0) != kHeaderBytes)
            return FailHeader("the job file is shorter than its header", path);
        CopyHeader(header, *job_);
        return 1;
    });
}

int32_t ABasePrinterDriverImp::FailHeader(const char* what, const char* path) {
    const int reason = LastSystemError();
    if (writer_ != nullptr) writer_->Report().Fail({kSource, __LINE__}, what, path, reason);
    return 0;
}

int32_t ABasePrinterDriverImp::ProcessJobStep() {
    if (!HasRunningJob()) return 0;
    if (AnswerJobCall("ProcessJobStep", [&] { return writer_->ProcessJobStep(); }) != 0) return 1;
    QL_LOG(kSource, kStepFailedLine, 'E', "Exception");
    EndJobEarly();
    return 0;
}

int32_t ABasePrinterDriverImp::AbortJob() {
    if (job_ == nullptr) return 0;
    EndJobEarly();
    return 1;
}

/// Closes the job's files and lets no step do anything more.
void ABasePrinterDriverImp::EndJobEarly() {
    job_->Aborted = 1;
    AnswerOr(0, [&] { return writer_->AbortJob(); });
    writer_->Report().EndJob();
    job_->Status->JobState = JobStatusRecord::kJobEnded;
}

int32_t ABasePrinterDriverImp::OpenPort(const char* folder, const char* sourceName) {
    if (writer_ == nullptr) return 0;
    if (!HasRunningJob()) return 1;
    if (AnswerJobCall("OpenPort", [&] { return writer_->OpenPort(folder, sourceName); }) == 0)
        EndJobEarly();
    return 1;
}

int32_t ABasePrinterDriverImp::ShowDriverOptions(DriverOptionBlock* /*options*/, int32_t /*mode*/,
                                                 PrintSettings* /*settings*/, HWND /*parent*/) {
    return 1;
}

int32_t ABasePrinterDriverImp::ResolveMediaIndex(PrintSettings* settings, int32_t index,
                                                 int32_t* out) {
    if (writer_ == nullptr) return 0;
    *out = index;
    if (index != kLastMedium && index != kSecondToLastMedium && index != kLastMediumToo) return 1;
    CapabilityList media;
    int32_t defaultMedia = 0;
    writer_->GetMediaList(settings, &media, &defaultMedia);
    const std::size_t fromEnd = index == kSecondToLastMedium ? 2 : 1;
    if (media.size() >= fromEnd) *out = media[media.size() - fromEnd].ID;
    return 1;
}

PrintSettings ABasePrinterDriverImp::CopySettings(PrintSettings* settings) {
    if (settings == nullptr) return PrintSettings();
    PrintSettings copy = *settings;
    int32_t mediaIndex = copy.MediaIndex;
    if (ResolveMediaIndex(settings, mediaIndex, &mediaIndex) != 0) copy.MediaIndex = mediaIndex;
    return copy;
}

CapabilityItem ABasePrinterDriverImp::CopyItem(PrintSettings* settings,
                                               const CapabilityItem* item) {
    CapabilityItem copy = {};
    copy.ID = -1;
    if (item == nullptr) return copy;
    copy = *item;
    int32_t identifier = copy.ID;
    if (ResolveMediaIndex(settings, identifier, &identifier) != 0) copy.ID = identifier;
    return copy;
}

int32_t ABasePrinterDriverImp::DecodeDriverOptions(const char* text, DriverOptionBlock* options,
                                                   PrintSettings* settings) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        PrintSettings copy = CopySettings(settings);
        return writer_->DecodeDriverOptions(text, options, &copy);
    });
}

int32_t ABasePrinterDriverImp::IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                                                  PrintSettings* settings) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        PrintSettings copy = CopySettings(settings);
        return writer_->IsColorModeAllowed(position, allowed, name, &copy);
    });
}

int32_t ABasePrinterDriverImp::FindColorModeID(const char* name) {
    if (writer_ == nullptr) return -1;
    return AnswerOr(-1, [&] { return writer_->FindColorModeID(name); });
}

int32_t ABasePrinterDriverImp::GetColorantList(int32_t position, ColorantInfoList* list) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] { return writer_->GetColorantList(position, list); });
}

int32_t ABasePrinterDriverImp::GetScreeningParams(ScreeningParams* parameters,
                                                  PrintSettings* settings) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        PrintSettings copy = CopySettings(settings);
        return writer_->GetScreeningParams(parameters, &copy);
    });
}

int32_t ABasePrinterDriverImp::GetDefaultColorMode(char* name, PrintSettings* settings) {
    if (writer_ == nullptr) return -1;
    return AnswerOr(0, [&] {
        PrintSettings copy = CopySettings(settings);
        return writer_->GetDefaultColorMode(name, &copy);
    });
}

int32_t ABasePrinterDriverImp::GetMediaList(PrintSettings* settings, CapabilityList* list,
                                            int32_t* defaultMedia) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] { return writer_->GetMediaList(settings, list, defaultMedia); });
}

int32_t ABasePrinterDriverImp::GetPrintModeList(PrintSettings* settings, CapabilityItem* media,
                                                CapabilityList* list, int32_t* defaultPosition) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        CapabilityItem copy = CopyItem(settings, media);
        return writer_->GetPrintModeList(settings, &copy, list, defaultPosition);
    });
}

int32_t ABasePrinterDriverImp::GetResolutionList(PrintSettings* settings, CapabilityItem* media,
                                                 CapabilityItem* printMode, ResolutionList* list,
                                                 HostArgument further) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        CapabilityItem copy = CopyItem(settings, media);
        return writer_->GetResolutionList(settings, &copy, printMode, list, further);
    });
}

int32_t ABasePrinterDriverImp::ReservedMediaQuery1(PrintSettings* settings, CapabilityItem* media,
                                                   HostArgument a, HostArgument b, HostArgument c,
                                                   HostArgument d) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        CapabilityItem copy = CopyItem(settings, media);
        return writer_->ReservedMediaQuery1(settings, &copy, a, b, c, d);
    });
}

int32_t ABasePrinterDriverImp::ReservedMediaQuery2(PrintSettings* settings, CapabilityItem* media,
                                                   HostArgument a, int32_t value, int32_t* out) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        CapabilityItem copy = CopyItem(settings, media);
        return writer_->ReservedMediaQuery2(settings, &copy, a, value, out);
    });
}

int32_t ABasePrinterDriverImp::AreOptionsDifferent(DriverOptionBlock* a, DriverOptionBlock* b) {
    if (writer_ != nullptr) return writer_->AreOptionsDifferent(a, b);
    if (a == nullptr || b == nullptr) return 0;
    return std::memcmp(a, b, sizeof *a) != 0 ? 1 : 0;
}

int32_t ABasePrinterDriverImp::EnsureDriverOptions(DriverOptionBlock* options) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] { return writer_->EnsureDriverOptions(options); });
}

int32_t ABasePrinterDriverImp::ReservedQuery18(HostArgument a, int32_t* b) {
    if (b != nullptr && *b < 0) return 1;
    return writer_ == nullptr ? 1 : writer_->ReservedQuery18(a, b);
}

int32_t ABasePrinterDriverImp::ReservedQuery21(HostArgument a, int32_t value, int32_t* out) {
    return writer_ == nullptr ? 0 : writer_->ReservedQuery21(a, value, out);
}

int32_t ABasePrinterDriverImp::GetDitherParams(const char* modelName, const char* manufacturerName,
                                               PrintSettings* settings, DitherParams* parameters) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] {
        return writer_->GetDitherParams(modelName, manufacturerName, settings, parameters);
    });
}

int32_t ABasePrinterDriverImp::ReservedMediaQuery3(PrintSettings* settings, CapabilityItem* media,
                                                   HostArgument c, HostArgument d, HostArgument e,
                                                   HostArgument f, HostArgument g) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0,
                    [&] { return writer_->ReservedMediaQuery3(settings, media, c, d, e, f, g); });
}

int32_t ABasePrinterDriverImp::SetPrintSettings(PrintSettings* settings) {
    if (writer_ == nullptr) return 0;
    return AnswerOr(0, [&] { return writer_->SetPrintSettings(settings); });
}

int32_t ABasePrinterDriverImp::GetDriverId() {
    return GetWriterDriverId();
}

int32_t ABasePrinterDriverImp::GetWriterDriverId() {
    return writer_ == nullptr ? -1 : writer_->GetDriverId();
}

// The rest only passes on: the writer's answer, or the one that stands for no writer.
int32_t ABasePrinterDriverImp::ReservedQuery3() {
    return writer_ ? writer_->ReservedQuery3() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery5() {
    return writer_ ? writer_->ReservedQuery5() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery6() {
    return writer_ ? writer_->ReservedQuery6() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery8() {
    return writer_ ? writer_->ReservedQuery8() : 3;
}
int32_t ABasePrinterDriverImp::ReservedQuery9() {
    return writer_ ? writer_->ReservedQuery9() : 3;
}
int32_t ABasePrinterDriverImp::ReservedQuery12() {
    return writer_ ? writer_->ReservedQuery12() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery13() {
    return writer_ ? writer_->ReservedQuery13() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery14() {
    return writer_ ? writer_->ReservedQuery14() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery15() {
    return writer_ ? writer_->ReservedQuery15() : 1;
}
int32_t ABasePrinterDriverImp::ReservedQuery16() {
    return writer_ ? writer_->ReservedQuery16() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery17() {
    return writer_ ? writer_->ReservedQuery17() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery19() {
    return writer_ ? writer_->ReservedQuery19() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery20() {
    return writer_ ? writer_->ReservedQuery20() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery22() {
    return writer_ ? writer_->ReservedQuery22() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery23() {
    return writer_ ? writer_->ReservedQuery23() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery24() {
    return writer_ ? writer_->ReservedQuery24() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery26() {
    return writer_ ? writer_->ReservedQuery26() : 0;
}
int32_t ABasePrinterDriverImp::ReservedQuery27() {
    return writer_ ? writer_->ReservedQuery27() : 0;
}
