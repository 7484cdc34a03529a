#include "ui/messages/MessageFile.h"

#include <cstdlib>

#include "platform/AppendToFile.h"

namespace {

const char* MessageFilePath() {
    const char* path = std::getenv("QL_MESSAGE_FILE");
    return path == nullptr ? "" : path;
}

}  // namespace

bool HasMessageFile() {
    return *MessageFilePath() != '\0';
}

bool AppendToMessageFile(const std::string& json) {
    return AppendToFile(MessageFilePath(), json + '\n');
}
