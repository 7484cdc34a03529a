#include "host/AFilePath.h"

#include <cstdlib>
#include <vector>

#include "host/Text.h"
#include "platform/CodePage.h"
#include "platform/PathRules.h"
#include "platform/win32.h"

namespace {

bool StartsWithDrive(std::string_view component) {
    if (component.size() < 2 || component[1] != ':') return false;
    const char letter = component[0];
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

/// Calls `visit` with each component of `text` until it answers false. Whether all were visited.
template <class Visit>
bool VisitComponents(std::string_view text, Visit visit) {
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = start;
        while (end < text.size() && !IsPathSeparator(text[end]))
            end += CharacterBytes(text.substr(end));
        if (end > start && !visit(text.substr(start, end - start))) return false;
        start = end + 1;
    }
    return true;
}

/// The components of a name with "." and ".." resolved.
std::vector<std::string_view> ResolvedName(std::string_view name) {
    std::vector<std::string_view> resolved;
    VisitComponents(name, [&](std::string_view component) {
        if (component == "..")
            resolved.pop_back();
        else if (component != ".")
            resolved.push_back(component);
        return true;
    });
    return resolved;
}

/// Separators unified, repeated ones folded, none at the end but for a root.
AString Normalize(std::string_view text) {
    AString path;
    // Two leading separators name a server where paths have drives; folding starts behind.
    const std::size_t folded = kPathSeparator == '\\' ? 1 : 0;
    bool endsWithSeparator = false;
    while (!text.empty()) {
        const std::string_view character = text.substr(0, CharacterBytes(text));
        text.remove_prefix(character.size());
        const bool separator = IsPathSeparator(character[0]);
        if (separator && endsWithSeparator && path.size() > folded) continue;
        endsWithSeparator = separator;
        if (separator)
            path += kPathSeparator;
        else
            path += character;
    }
    if (path.size() > 1 && endsWithSeparator) path.pop_back();
    return path.empty() ? AString(".") : path;
}

std::string_view BaseFolder() {
    const char* folder = std::getenv("QL_BASE_FOLDER");
    return folder == nullptr ? "" : folder;
}

}  // namespace

AFilePath::AFilePath() : AFilePath(BaseFolder()) {}

AFilePath::AFilePath(std::string_view text) : path_(Normalize(text)) {}

bool AFilePath::CanAppend(std::string_view name) noexcept {
    std::size_t depth = 0;
    return VisitComponents(name, [&](std::string_view component) {
        if (StartsWithDrive(component)) return false;
        if (component == "..") return depth-- > 0;
        if (component != ".") ++depth;
        return true;
    });
}

AFilePath& AFilePath::Append(std::string_view name) {
    if (!valid_ || !CanAppend(name)) {
        Invalidate(name);
        return *this;
    }
    for (const std::string_view component : ResolvedName(name)) {
        const bool isRoot = FindLastCharacter(path_, kPathSeparator) == path_.size() - 1;
        if (!isRoot) path_ += kPathSeparator;
        path_ += component;
    }
    return *this;
}

Existence AFilePath::LookFor(int* systemError) const {
    if (!valid_) return Existence::kMissing;
    if (GetFileAttributesA(path_.c_str()) != INVALID_FILE_ATTRIBUTES) return Existence::kExists;
    const DWORD error = GetLastError();
    if (systemError != nullptr) *systemError = static_cast<int>(error);
    const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return isMissing ? Existence::kMissing : Existence::kUnknown;
}

AString AFilePath::folderPart() const {
    const std::size_t last = FindLastCharacter(path_, kPathSeparator);
    return last == AString::npos ? AString() : path_.substr(0, last + 1);
}

void AFilePath::Invalidate(std::string_view name) {
    if (valid_) refused_ = name;
    valid_ = false;
    path_.clear();
}
