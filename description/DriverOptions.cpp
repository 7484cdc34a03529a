#include "description/DriverOptions.h"

#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "host/AFile.h"
#include "host/AFilePath.h"
#include "host/AXMLTree.h"
#include "host/FSGanerateID.h"
#include "host/FileBytes.h"
#include "host/Numbers.h"
#include "host/Text.h"
#include "platform/PathRules.h"

namespace {

constexpr std::string_view kNamePrefix = "QL_DROP_";
constexpr std::size_t kMostNameCharacters = 254;
constexpr std::string_view kNewFileFolder = "Jobs and Settings";
constexpr std::string_view kSearchedFolders[] = {kNewFileFolder, "ICCProfile", "Devices"};
constexpr const char* kElement = "DriverOptions";
constexpr const char* kAttribute = "SupportWhiteType";
constexpr const char* kNoneChosen = "-1";

AFilePath OptionsPath(std::string_view folder, std::string_view name) {
    return AFilePath().Append(folder).Append("OptionsDrivers").Append(name);
}

/// The options file name that the block holds; nothing when it holds none, or one that would
/// lead out of the options folders.
std::optional<std::string_view> OptionsName(const DriverOptionBlock& block) {
    const std::string_view name = FieldText(block.FileName, kMostNameCharacters);
    if (name.find(kNamePrefix) == std::string_view::npos) return std::nullopt;
    for (const char character : name) {
        if (IsPathSeparator(character)) return std::nullopt;
    }
    if (!OptionsPath(kNewFileFolder, name).isValid()) return std::nullopt;  // a drive
    return name;
}

/// The block's options file where it stands; nothing when it stands in none of the folders.
std::optional<AFilePath> ExistingFile(const DriverOptionBlock& block) {
    const std::optional<std::string_view> name = OptionsName(block);
    if (!name) return std::nullopt;
    for (const std::string_view folder : kSearchedFolders) {
        AFilePath path = OptionsPath(folder, *name);
        if (path.exists()) return path;
    }
    return std::nullopt;
}

/// The block's options file, made anew when it stands in none of the folders; nothing when the
/// block names no file.
std::optional<AFilePath> FindOptionsFile(DriverOptionBlock& block) {
    if (!OptionsName(block)) return std::nullopt;
    if (auto path = ExistingFile(block)) return path;
    CreateDriverOptionsFile(block);
    return OptionsPath(kNewFileFolder, FieldText(block.FileName, kMostNameCharacters));
}

bool LoadOptions(AXMLTree& document, const AFilePath& path) {
    return document.loadFromFile(path, 1) != 0;
}

bool FindOptions(const AXMLTree& document, AXMLTreeNode& options) {
    AXMLTreeNode root;
    return document.getRootNode(root) != 0 && document.getChild(kElement, root, options) != 0;
}

/// -1 for a character that is no hexadecimal digit.
int32_t HexDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

/// The number that one or two hexadecimal digits at the start of `pair` make; 0 without any.
uint8_t HexByte(std::string_view pair) {
    int32_t value = 0;
    for (const char character : pair) {
        const int32_t digit = HexDigit(character);
        if (digit < 0) break;
        value = value * 16 + digit;
    }
    return static_cast<uint8_t>(value);
}

}  // namespace

void CreateDriverOptionsFile(DriverOptionBlock& block) {
    if (const auto earlier = OptionsName(block)) {
        const AFilePath path = OptionsPath(kNewFileFolder, *earlier);
        if (path.exists()) AFile::DeleteFileA(path, 1);
    }
    const AString name = AString(kNamePrefix) + FSGanerateID() + ".xml";
    block.Kind = DriverOptionBlock::kNamesOptionsFile;
    CopyText(block.FileName, sizeof block.FileName, name);

    AXMLTree document("RootElement");
    AXMLTreeNode root;
    AXMLTreeNode options;
    document.getRootNode(root);
    document.addChild(options, root, kElement, "", -1);
    document.setAttribute(options, kAttribute, kNoneChosen);
    // Without the folder there is no file; the next look-up tries again with a new name.
    document.saveToFile(OptionsPath(kNewFileFolder, name));
}

void EnsureDriverOptions(DriverOptionBlock& block) {
    if (block.Kind != DriverOptionBlock::kNamesOptionsFile) CreateDriverOptionsFile(block);
}

bool HasDriverOptions(const DriverOptionBlock& block) {
    return block.Kind == DriverOptionBlock::kNamesOptionsFile && ExistingFile(block).has_value();
}

int32_t ReadDriverOptions(DriverOptionBlock& block, int32_t& whiteType) {
    const std::optional<AFilePath> path = FindOptionsFile(block);
    AXMLTree document("RootElement");
    AXMLTreeNode options;
    if (!path || !LoadOptions(document, *path) || !FindOptions(document, options)) return 0;
    const AString value = document.getAttribute(options, kAttribute);
    whiteType = value.empty() ? -1 : Atoi(value);
    return 1;
}

void WriteDriverOptions(DriverOptionBlock& block, int32_t whiteType) {
    const std::optional<AFilePath> path = FindOptionsFile(block);
    AXMLTree document("RootElement");
    AXMLTreeNode options;
    if (!path || !LoadOptions(document, *path) || !FindOptions(document, options)) return;
    document.setAttribute(options, kAttribute, std::to_string(whiteType));
    document.saveToFile(*path);  // a failed save leaves the file as it was
}

DriverOptionsSnapshot::DriverOptionsSnapshot(const DriverOptionBlock& block) : block_(block) {
    if (const auto name = OptionsName(block)) {
        path_ = OptionsPath(kNewFileFolder, *name);
        content_ = ReadFileBytes(*path_);
    }
}

void DriverOptionsSnapshot::Restore(DriverOptionBlock& block) const {
    const auto name = OptionsName(block);
    const bool isOther =
        name && (!path_ || OptionsPath(kNewFileFolder, *name).fullPath() != path_->fullPath());
    if (isOther) {
        const AFilePath made = OptionsPath(kNewFileFolder, *name);
        if (made.exists()) AFile::DeleteFileA(made, 1);
    }
    if (content_ && ReadFileBytes(*path_) != content_) ReplaceFileBytes(*path_, *content_);
    block = block_;
}

bool DecodeDriverOptionsText(const char* text, DriverOptionBlock& block) {
    constexpr std::size_t kByteCount = 200;  // the host's text form carries no more
    const char* const keyword = text == nullptr ? nullptr : std::strstr(text, "DriverOptionBinary");
    const char* const equals = keyword == nullptr ? nullptr : std::strchr(keyword, '=');
    if (equals == nullptr) return false;
    const std::string_view digits = FieldText(equals + 1, 2 * kByteCount);
    uint8_t bytes[kByteCount] = {};
    for (std::size_t index = 0; 2 * index < digits.size(); ++index) {
        bytes[index] = HexByte(digits.substr(2 * index, 2));
    }
    std::memcpy(&block, bytes, kByteCount);
    return true;
}
