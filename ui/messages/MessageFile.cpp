#include "ui/messages/MessageFile.h"

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "platform/AppendToFile.h"
#include "platform/CodePage.h"

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

std::string JsonText(std::string_view text) {
    return nlohmann::json(AnsiToUtf8(text)).dump();
}
