#include "host/FileBytes.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <vector>

#include "platform/CodePage.h"
#include "platform/Folder.h"
#include "platform/NewFile.h"
#include "platform/Process.h"
#include "platform/Stream.h"
#include "platform/SystemError.h"
#include "platform/win32.h"

namespace {

/// Reads to the file's end, or with `untilNul` to its first NUL byte.
std::optional<std::string> ReadStream(std::FILE* file, std::uint64_t mostBytes, bool untilNul) {
    std::string bytes;
    std::vector<char> block(std::size_t{64} * 1024);
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file)) > 0) {
        const void* const nul = untilNul ? std::memchr(block.data(), 0, count) : nullptr;
        if (nul != nullptr)
            count = static_cast<std::size_t>(static_cast<const char*>(nul) - block.data());
        if (count > mostBytes - bytes.size()) return std::nullopt;
        bytes.append(block.data(), count);
        if (nul != nullptr) return bytes;
    }
    if (std::ferror(file) != 0) return std::nullopt;
    return bytes;
}

std::optional<std::string> ReadBytes(const AFilePath& path, std::uint64_t mostBytes, bool untilNul,
                                     int* systemError) {
    std::optional<std::string> bytes;
    ForgetSystemError();
    const Stream file = path.isValid() ? OpenStream(path.fullPath().c_str(), "rb") : nullptr;
    if (file != nullptr) bytes = ReadStream(file.get(), mostBytes, untilNul);
    if (!bytes && systemError != nullptr) *systemError = LastSystemError();
    return bytes;
}

constexpr std::string_view kUnfinished = ".tmp";

/// Takes ".NUMBER", as we write it, off the end of `text`; 0, which nobody writes for a process,
/// when there is none.
std::int64_t TakeNumber(std::string_view& text) {
    const std::size_t dot = text.rfind('.');
    if (dot == std::string_view::npos) return 0;
    const std::string_view digits = text.substr(dot + 1);
    std::int64_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec != std::errc() || std::to_string(number) != digits) return 0;
    text = text.substr(0, dot);
    return number;
}

/// Where a file of a folder is written first.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const AFilePath& path)
        : folder_(path.folderPart()),
          name_(std::string_view(path.fullPath()).substr(folder_.size())),
          mostBytes_(MostNameBytes(FolderOrHere())) {}

    std::string Path(WriterId writer) const {
        return folder_ +
               Name(fmt::format(".{}.{}{}", ProcessNumber(), writer.Number(), kUnfinished));
    }

    /// Removes what processes that live no more have left of this file.
    void RemoveLeftovers() const {
        VisitFolder(FolderOrHere(), [&](const char* entry) {
            if (IsLeftover(entry)) DeleteFileA((folder_ + entry).c_str());
        });
    }

  private:
    const char* FolderOrHere() const { return folder_.empty() ? "." : folder_.c_str(); }

    std::string Name(std::string_view ending) const {
        const std::size_t room = mostBytes_ > ending.size() ? mostBytes_ - ending.size() : 0;
        return std::string(WholeCharacters(name_, room)).append(ending);
    }

    bool IsLeftover(std::string_view entry) const {
        if (!entry.ends_with(kUnfinished)) return false;
        std::string_view rest = entry.substr(0, entry.size() - kUnfinished.size());
        const std::string_view numbered = rest;
        TakeNumber(rest);
        const std::int64_t process = rest.size() == numbered.size() ? 0 : TakeNumber(rest);
        // The name can be another file's that is longer, and ends in numbers itself.
        return process > 0 && entry == Name(entry.substr(rest.size())) && HasProcessEnded(process);
    }

    std::string folder_;
    std::string_view name_;  ///< of the path's, which the caller keeps
    std::size_t mostBytes_;
};

}  // namespace

std::optional<std::string> ReadFileBytes(const AFilePath& path, std::uint64_t mostBytes,
                                         int* systemError) {
    return ReadBytes(path, mostBytes, false, systemError);
}

std::optional<std::string> ReadFileText(const AFilePath& path, std::uint64_t mostBytes,
                                        int* systemError) {
    return ReadBytes(path, mostBytes, true, systemError);
}

WriteOutcome ReplaceFileBytes(const AFilePath& path, std::string_view bytes, WriterId writer) {
    if (!path.isValid()) return {};
    const UnfinishedFile unfinished(path);
    const std::string temporary = unfinished.Path(writer);
    unfinished.RemoveLeftovers();
    DeleteFileA(temporary.c_str());
    if (const int error = WriteNewFile(temporary.c_str(), bytes)) return {false, error};
    if (const int error = RenameOver(temporary.c_str(), path.fullPath().c_str())) {
        DeleteFileA(temporary.c_str());
        return {false, error};
    }
    return {true, 0};
}
