#include "host/LogText.h"

#include "platform/SystemError.h"

void AppendFault(LogText& entry, std::string_view what, std::string_view subject, int systemError) {
    entry << what;
    if (!subject.empty()) entry << ": " << subject;
    char buffer[256];
    const std::string_view reason = SystemErrorText(systemError, buffer, sizeof buffer);
    if (!reason.empty()) entry << ": " << reason;
}
