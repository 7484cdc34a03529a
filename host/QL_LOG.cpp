#include "host/QL_LOG.h"

#include <fmt/format.h>

#include <cstdlib>

#include "platform/Stream.h"

void QL_LOG(const char* file, int line, char level, std::string_view message) {
    const std::string entry = fmt::format("{} {}({}): {}\n", level, file, line, message);
    const char* path = std::getenv("QL_LOG_FILE");
    const Stream log = path != nullptr && *path != '\0' ? OpenStream(path, "ab") : nullptr;
    std::fwrite(entry.data(), 1, entry.size(), log != nullptr ? log.get() : stderr);
}
