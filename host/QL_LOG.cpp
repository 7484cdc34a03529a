#include "host/QL_LOG.h"

#include <cstdlib>

#include "host/LogText.h"
#include "platform/AppendToFile.h"

void QL_LOG(const char* file, int line, char level, std::string_view message) noexcept {
    LogText entry;
    entry << level << ' ' << file << '(' << line << "): ";
    // The line end behind it must fit, however long the message is.
    constexpr std::size_t kMostMessageBytes = 9000;
    for (const char character : message) {
        if (entry.View().size() >= kMostMessageBytes) break;
        if (character == '\n')
            entry << "\\n";
        else if (character == '\r')
            entry << "\\r";
        else
            entry << character;
    }
    entry << '\n';
    const char* const path = std::getenv("QL_LOG_FILE");
    const bool hasPath = path != nullptr && *path != '\0';
    if (!hasPath || !AppendToFile(path, entry.View())) WriteToStandardError(entry.View());
}
