#include "BaseFolder.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr int kPlainMessage = 0x10000;  // an OK button (0) with MB_SETFOREGROUND

std::vector<std::string> Lines(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace

BaseFolder::BaseFolder() {
    std::string pattern = (fs::temp_directory_path() / "boundary.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    root_ = pattern;
    fs::permissions(root_, fs::perms::others_exec, fs::perm_options::add);
    for (const fs::path& folder :
         {Base() / "OutputDrivers/HeaderTemplates", Base() / "OutputDrivers/JobTicketTemplates",
          Temp(), Base() / "temp", Options(), Out(), Jobs()}) {
        fs::create_directories(folder);
    }
    Use();
}

void BaseFolder::Use() const {
    setenv("QL_BASE_FOLDER", Base().c_str(), 1);
    setenv("QL_MESSAGE_FILE", (root_ / "messages").c_str(), 1);
    setenv("QL_LOG_FILE", (root_ / "log").c_str(), 1);
    for (const char* name :
         {"QL_DIALOG_SCRIPT", "QL_CODE_PAGE", "QL_STRICT", "DISPLAY", "WAYLAND_DISPLAY"}) {
        unsetenv(name);
    }
}

BaseFolder::~BaseFolder() {
    std::error_code ignored;  // nothing to do about a temporary file that stays
    fs::remove_all(root_, ignored);
}

void BaseFolder::InstallModel(const std::string& model, const std::string& description) {
    WriteText(Base() / "OutputDrivers/ZeComFile.xml",
              "<Models><Model Name=\"" + model + "\" XMLFile=\"model.xml\"/></Models>");
    WriteText(Base() / "OutputDrivers/model.xml", description);
}

std::vector<std::string> BaseFolder::Messages() const {
    std::vector<std::string> texts;
    for (const std::string& line : Lines(root_ / "messages")) {
        const auto message = nlohmann::json::parse(line);
        const bool plain = message.contains("text") &&
                           message.at("caption").get<std::string>().empty() &&
                           message.at("owner") == 0u && message.at("type") == kPlainMessage;
        texts.push_back(plain ? message.at("text").get<std::string>() : message.dump());
    }
    return texts;
}

std::vector<std::string> BaseFolder::Log() const {
    return Lines(root_ / "log");
}

std::vector<std::string> BaseFolder::Errors() const {
    std::vector<std::string> errors = Log();
    std::erase_if(errors, [](const std::string& line) { return line.rfind("E ", 0) != 0; });
    return errors;
}

std::vector<std::string> Listing(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = fs::relative(entry.path(), folder).string();
        names.push_back(entry.is_directory() ? name + "/" : name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return in ? text.str() : "";
}

void WriteText(const fs::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}
