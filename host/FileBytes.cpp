#include "host/FileBytes.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

#include "host/FSGanerateID.h"
#include "platform/Stream.h"

namespace {

/// Reads to the file's end, or with `untilNul` to its first NUL byte.
std::optional<std::string> ReadBytes(const AFilePath& path, std::uint64_t mostBytes,
                                     bool untilNul) {
    if (!path.isValid()) return std::nullopt;
    const Stream file = OpenStream(path.fullPath().c_str(), "rb");
    if (file == nullptr) return std::nullopt;
    std::string bytes;
    std::vector<char> block(std::size_t{64} * 1024);
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        const void* const nul = untilNul ? std::memchr(block.data(), 0, count) : nullptr;
        if (nul != nullptr)
            count = static_cast<std::size_t>(static_cast<const char*>(nul) - block.data());
        if (count > mostBytes - bytes.size()) return std::nullopt;
        bytes.append(block.data(), count);
        if (nul != nullptr) return bytes;
    }
    if (std::ferror(file.get()) != 0) return std::nullopt;
    return bytes;
}

bool WriteBytes(const std::string& path, const std::string& bytes) {
    Stream file = OpenStream(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    return std::fclose(file.release()) == 0 && written;
}

}  // namespace

std::optional<std::string> ReadFileBytes(const AFilePath& path, std::uint64_t mostBytes) {
    return ReadBytes(path, mostBytes, false);
}

std::optional<std::string> ReadFileText(const AFilePath& path, std::uint64_t mostBytes) {
    return ReadBytes(path, mostBytes, true);
}

bool ReplaceFileBytes(const AFilePath& path, const std::string& bytes) {
    if (!path.isValid()) return false;
    const std::string temporary = path.folderPart() + FSGanerateID() + ".tmp";
    std::error_code failure = std::make_error_code(std::errc::io_error);
    if (WriteBytes(temporary, bytes)) std::filesystem::rename(temporary, path.fullPath(), failure);
    if (failure) std::remove(temporary.c_str());
    return !failure;
}
