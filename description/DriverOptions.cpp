#include "description/DriverOptions.h"

#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "host/AFile.h"
#include "host/AFilePath.h"
#include "host/AXMLTree.h"
#include "host/FSGanerateID.h"
#include "host/FileBytes.h"
#include "host/LogText.h"
#include "host/Numbers.h"
#include "host/QL_LOG.h"
#include "host/Text.h"
#include "platform/PathRules.h"
#include "platform/win32.h"

namespace {

constexpr std::string_view kNamePrefix = "QL_DROP_";
constexpr std::size_t kMostNameCharacters = 254;
constexpr std::string_view kNewFileFolder = "Jobs and Settings";
constexpr std::string_view kSearchedFolders[] = {kNewFileFolder, "ICCProfile", "Devices"};
constexpr const char* kElement = "DriverOptions";
constexpr const char* kAttribute = "SupportWhiteType";
constexpr const char* kNoneChosen = "-1";

AFilePath OptionsFolder(std::string_view folder) {
    return AFilePath().Append(folder).Append("OptionsDrivers");
}

AFilePath OptionsPath(std::string_view folder, std::string_view name) {
    return OptionsFolder(folder).Append(name);
}

/// The options file name that the block holds; nothing when it holds none, or one that would
/// lead out of the options folders.
std::optional<std::string_view> OptionsName(const DriverOptionBlock& block) {
    const std::string_view name = FieldText(block.FileName, kMostNameCharacters);
    constexpr std::size_t kNone = std::string_view::npos;
    if (FindText(name, kNamePrefix) == kNone) return std::nullopt;
    if (FindCharacter(name, '/') != kNone || FindCharacter(name, '\\') != kNone)
        return std::nullopt;
    if (!AFilePath::CanAppend(name)) return std::nullopt;  // a drive
    return name;
}

/// Where a search for the block's options file ends: at the first file that is there, or that
/// might be.
struct OptionsFile {
    AFilePath Path;
    Existence Found = Existence::kMissing;
    int SystemError = 0;
};

OptionsFile Search(std::string_view name) {
    OptionsFile missing = {OptionsPath(kNewFileFolder, name)};
    for (const std::string_view folder : kSearchedFolders) {
        OptionsFile file = {OptionsPath(folder, name)};
        file.Found = file.Path.LookFor(&file.SystemError);
        if (file.Found != Existence::kMissing) return file;
        missing.SystemError = file.SystemError;
    }
    return missing;
}

/// The block's options file, made anew when it stands in none of the folders; nothing when the
/// block names no file.
std::optional<AFilePath> FindOptionsFile(DriverOptionBlock& block, WriterId writer) {
    const std::optional<std::string_view> name = OptionsName(block);
    if (!name) return std::nullopt;
    const OptionsFile file = Search(*name);
    if (file.Found != Existence::kMissing) return file.Path;
    CreateDriverOptionsFile(block, writer);
    return OptionsPath(kNewFileFolder, FieldText(block.FileName, kMostNameCharacters));
}

void LogFault(int line, std::string_view what, std::string_view file, int systemError) {
    LogText entry;
    AppendFault(entry, what, file, systemError);
    QL_LOG("description\\DriverOptions", line, 'E', entry.View());
}

/// Loads an options file and finds the element that holds the choice.
bool LoadOptions(const AFilePath& path, AXMLTree& document, AXMLTreeNode& options,
                 int& systemError) {
    const std::optional<std::string> text = ReadFileBytes(path, kMostTextBytes, &systemError);
    AXMLTreeNode root;
    return text && document.loadXML(*text, 1) != 0 && document.getRootNode(root) != 0 &&
           document.getChild(kElement, root, options) != 0;
}

bool ReadWhiteType(const AFilePath& path, int32_t& whiteType, int& systemError) {
    AXMLTree document("RootElement");
    AXMLTreeNode options;
    if (!LoadOptions(path, document, options, systemError)) return false;
    const AString value = document.getAttribute(options, kAttribute);
    whiteType = value.empty() ? -1 : Atoi(value);
    return true;
}

/// Deletes the file that the block names in the folder where new ones are made.
void DeleteNamedFile(const DriverOptionBlock& block) {
    const auto name = OptionsName(block);
    if (!name) return;
    const AFilePath path = OptionsPath(kNewFileFolder, *name);
    if (path.exists()) AFile::DeleteFileA(path, 1);
}

/// Runs `store`; what it throws, which is memory that is gone, is said and thrown on.
template <class Store>
void SayWhatIsThrown(const DriverOptionBlock& block, Store store) {
    try {
        store();
    } catch (...) {
        LogFault(__LINE__, "no memory to store the white choice",
                 FieldText(block.FileName, kMostNameCharacters), 0);
        throw;
    }
}

void SaveOptions(AXMLTree& document, const AXMLTreeNode& options, const AString& whiteType,
                 const AFilePath& path, WriterId writer) {
    if (document.setAttribute(options, kAttribute, whiteType) == 0) throw std::bad_alloc();
    int systemError = 0;
    if (document.saveToFile(path, writer, &systemError) != 0) return;
    LogFault(__LINE__, "the white choice cannot be stored", path.fullPath(), systemError);
}

void MakeNewFile(DriverOptionBlock& block, WriterId writer) {
    SayWhatIsThrown(block, [&] {
        const AString name = AString(kNamePrefix) + FSGanerateID() + ".xml";
        block.Kind = DriverOptionBlock::kNamesOptionsFile;
        CopyText(block.FileName, sizeof block.FileName, name);

        AXMLTree document("RootElement");
        AXMLTreeNode root;
        AXMLTreeNode options;
        document.getRootNode(root);
        document.addChild(options, root, kElement, "", -1);
        // Without the folder there is no file; the next look-up tries again with a new name.
        SaveOptions(document, options, kNoneChosen, OptionsPath(kNewFileFolder, name), writer);
    });
}

/// The choice goes into a file that is there and can be read.
void StoreChoice(DriverOptionBlock& block, int32_t whiteType, WriterId writer) {
    const std::optional<AFilePath> path = FindOptionsFile(block, writer);
    if (!path) {
        LogFault(__LINE__, "the white choice cannot be stored, the options block names no file",
                 FieldText(block.FileName, kMostNameCharacters), 0);
        return;
    }
    AXMLTree document("RootElement");
    AXMLTreeNode options;
    int systemError = 0;
    if (LoadOptions(*path, document, options, systemError)) {
        SaveOptions(document, options, std::to_string(whiteType), *path, writer);
    } else {
        LogFault(__LINE__, "the white choice cannot be stored, its file cannot be read",
                 path->fullPath(), systemError);
    }
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

void CreateDriverOptionsFile(DriverOptionBlock& block, WriterId writer) {
    DeleteNamedFile(block);
    MakeNewFile(block, writer);
}

void EnsureDriverOptions(DriverOptionBlock& block, WriterId writer) {
    if (block.Kind != DriverOptionBlock::kNamesOptionsFile) CreateDriverOptionsFile(block, writer);
}

bool HasDriverOptions(const DriverOptionBlock& block) {
    const std::optional<std::string_view> name = OptionsName(block);
    return block.Kind == DriverOptionBlock::kNamesOptionsFile && name &&
           Search(*name).Found == Existence::kExists;
}

int32_t ReadDriverOptions(DriverOptionBlock& block, int32_t& whiteType, WriterId writer) {
    const std::optional<AFilePath> path = FindOptionsFile(block, writer);
    int systemError = 0;
    return path && ReadWhiteType(*path, whiteType, systemError) ? 1 : 0;
}

void WriteDriverOptions(DriverOptionBlock& block, int32_t whiteType, WriterId writer) {
    SayWhatIsThrown(block, [&] { StoreChoice(block, whiteType, writer); });
}

OptionsState PeekDriverOptions(const DriverOptionBlock& block, int32_t& whiteType,
                               OptionsPlace* place) {
    const std::optional<std::string_view> name = OptionsName(block);
    if (!name) return OptionsState::kNone;
    OptionsFile file = Search(*name);
    OptionsState state = OptionsState::kMissing;
    if (file.Found == Existence::kUnknown) state = OptionsState::kUnreadable;
    if (file.Found == Existence::kExists) {
        const bool isRead = ReadWhiteType(file.Path, whiteType, file.SystemError);
        state = isRead ? OptionsState::kRead : OptionsState::kUnreadable;
    }
    if (place != nullptr) *place = {std::move(file.Path), file.SystemError};
    return state;
}

DriverOptionsEdit::DriverOptionsEdit(DriverOptionBlock& block, WriterId writer)
    : block_(block),
      before_(block),
      writer_(writer),
      newFile_(OptionsFolder(kNewFileFolder).fullPath() + kPathSeparator) {
    newFile_.reserve(newFile_.size() + kMostNameCharacters);
}

DriverOptionsEdit::~DriverOptionsEdit() {
    if (isKept_) return;
    const bool hasOther = NamesAnother();
    const DriverOptionBlock made = std::exchange(block_, before_);
    const auto name = OptionsName(made);
    if (hasOther && name) DeleteFileA(newFile_.append(*name).c_str());  // allocates nothing
}

void DriverOptionsEdit::StartOver() {
    if (NamesAnother()) DeleteNamedFile(block_);
    MakeNewFile(block_, writer_);
}

void DriverOptionsEdit::Keep() {
    if (NamesAnother()) DeleteNamedFile(before_);
    isKept_ = true;
}

bool DriverOptionsEdit::NamesAnother() const {
    return FieldText(block_.FileName, kMostNameCharacters) !=
           FieldText(before_.FileName, kMostNameCharacters);
}

bool DecodeDriverOptionsText(const char* text, DriverOptionBlock& block) {
    constexpr std::size_t kByteCount = 200;  // the host's text form carries no more
    constexpr std::size_t kNone = std::string_view::npos;
    std::string_view rest = text == nullptr ? "" : text;
    const std::size_t keyword = FindText(rest, "DriverOptionBinary");
    if (keyword == kNone) return false;
    rest = rest.substr(keyword);
    const std::size_t equals = FindCharacter(rest, '=');
    if (equals == kNone) return false;
    const std::string_view digits = rest.substr(equals + 1, 2 * kByteCount);
    uint8_t bytes[kByteCount] = {};
    for (std::size_t index = 0; 2 * index < digits.size(); ++index) {
        bytes[index] = HexByte(digits.substr(2 * index, 2));
    }
    std::memcpy(&block, bytes, kByteCount);
    return true;
}
