#include "PrinterDriver/Common/Xsrc/JobReport.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "PrinterDriver/Common/Xsrc/JobFault.h"
#include "host/LogText.h"
#include "host/QL_LOG.h"
#include "host/Text.h"
#include "platform/SystemError.h"

namespace {

constexpr int32_t kPageStatus = 1;

bool WantsStrict() {
    const char* const value = std::getenv("QL_STRICT");
    const std::string_view text = value == nullptr ? "" : value;
    return !text.empty() && text != "0";
}

void Compose(LogText& message, std::string_view job, std::string_view what,
             std::string_view subject, int systemError) {
    if (!job.empty()) message << job << ": ";
    message << what;
    if (!subject.empty()) message << ": " << subject;
    char buffer[256];
    const std::string_view reason = SystemErrorText(systemError, buffer, sizeof buffer);
    if (!reason.empty()) message << ": " << reason;
}

}  // namespace

void JobReport::StartJob(std::string_view jobFile, JobStatusRecord* status) {
    NameJob(jobFile);
    status_ = status;
    isStrict_ = WantsStrict();
    hasSaid_ = false;
    notedCount_ = 0;
}

void JobReport::NameJob(std::string_view jobName) {
    CopyText(jobName_, sizeof jobName_, jobName);
}

void JobReport::StartPage() {
    notedCount_ = 0;
}

void JobReport::Write(char level, LogPlace place, std::string_view message) noexcept {
    QL_LOG(place.file, place.line, level, message);
    if (level == 'E') hasSaid_ = true;
}

void JobReport::Fail(LogPlace place, std::string_view what, std::string_view subject,
                     int systemError) noexcept {
    LogText message;
    Compose(message, jobName_, what, subject, systemError);
    Write('E', place, message.View());
}

void JobReport::Warn(LogPlace place, std::string_view what, std::string_view subject,
                     int systemError) noexcept {
    LogText message;
    Compose(message, jobName_, what, subject, systemError);
    Write('W', place, message.View());
}

bool JobReport::IsNew(Doubt doubt, std::string_view subject) {
    constexpr std::size_t kDoubts = 256;
    const std::size_t key =
        std::hash<std::string_view>()(subject) * kDoubts + static_cast<std::size_t>(doubt);
    const auto end = noted_.begin() + static_cast<std::ptrdiff_t>(notedCount_);
    if (notedCount_ == noted_.size() || std::find(noted_.begin(), end, key) != end) return false;
    noted_[notedCount_++] = key;
    return true;
}

void JobReport::Note(Doubt doubt, LogPlace place, std::string_view what, std::string_view subject,
                     int systemError) {
    LogText message;
    Compose(message, jobName_, what, subject, systemError);
    if (IsNew(doubt, subject)) Write('E', place, message.View());
    if (!isStrict_) return;
    if (status_ != nullptr) {
        CopyText(status_->StatusText, sizeof status_->StatusText, message.View());
        status_->StatusKind = kPageStatus;
    }
    Raise(kOutputFailed);
}
