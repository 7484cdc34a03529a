#include "driverhost/TemplateRemarks.h"

void TemplateRemarks::Error(std::size_t offset, std::string text) const {
    Add(Severity::kError, offset, std::move(text));
}

void TemplateRemarks::Warning(std::size_t offset, std::string text) const {
    Add(Severity::kWarning, offset, std::move(text));
}

void TemplateRemarks::Add(Severity level, std::size_t offset, std::string text) const {
    // The place of a finding that is only counted is of no interest.
    const TextPosition at = findings_.IsFull(file_) ? TextPosition() : At(offset);
    findings_.Add(level, file_, at, std::move(text));
}
