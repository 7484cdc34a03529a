#include "host/FileBytes.h"

#include <vector>

#include "platform/Stream.h"

std::optional<std::string> ReadFileBytes(const AFilePath& path, std::uint64_t mostBytes) {
    if (!path.isValid()) return std::nullopt;
    const Stream file = OpenStream(path.fullPath().c_str(), "rb");
    if (file == nullptr) return std::nullopt;
    std::string bytes;
    std::vector<char> block(std::size_t{64} * 1024);
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        if (count > mostBytes - bytes.size()) return std::nullopt;
        bytes.append(block.data(), count);
    }
    if (std::ferror(file.get()) != 0) return std::nullopt;
    return bytes;
}
