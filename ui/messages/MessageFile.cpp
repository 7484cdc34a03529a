#include "ui/messages/MessageFile.h"

#include <cstdlib>

#include "platform/Stream.h"

namespace {

const char* MessageFilePath() {
    const char* path = std::getenv("QL_MESSAGE_FILE");
    return path == nullptr ? "" : path;
}

}  // namespace

bool HasMessageFile() {
    return *MessageFilePath() != '\0';
}

void AppendToMessageFile(const std::string& json) {
    const Stream file = OpenStream(MessageFilePath(), "ab");
    if (file == nullptr) return;
    const std::string line = json + '\n';
    std::fwrite(line.data(), 1, line.size(), file.get());
}
