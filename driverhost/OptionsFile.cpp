#include "driverhost/OptionsFile.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstring>
#include <optional>

#include "description/DriverOptions.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "host/FileBytes.h"
#include "host/Text.h"

namespace {

/// Of a block, which the host's text form carries.
constexpr std::size_t kTextFormBytes = 200;
constexpr uint64_t kMostJobBytes = uint64_t{1} << 20;

}  // namespace

OptionsFile::OptionsFile(const std::filesystem::path& path) : path_(path) {
    const std::optional<std::string> bytes = ReadFileBytes(AFilePath(path.string()), kMostJobBytes);
    if (!bytes) throw HostError(kFailed, fmt::format("cannot read {}", path.string()));
    bytes_ = *bytes;
    RefuseArtwork(path);
    isJob_ = bytes_.size() >= sizeof(JobFileHeader);
    if (!isJob_ && bytes_.size() != sizeof Block)
        throw HostError(kFailed, fmt::format("{} is neither a job file nor a block of {} bytes",
                                             path.string(), sizeof Block));
    if (!isJob_) {
        std::memcpy(&Block, bytes_.data(), sizeof Block);
        return;
    }
    JobFileHeader header;
    std::memcpy(&header, bytes_.data(), sizeof header);
    if (!IsJobHeader(header))
        throw HostError(kFailed,
                        fmt::format("{} is no job file: it names no model", path.string()));
    Block = header.Options;
    model_ = FieldText(header.PrinterName, sizeof header.PrinterName);
    colorMode_ = header.ColorModeIndex;
}

void OptionsFile::Save() const {
    std::string bytes = bytes_;
    const std::size_t offset = isJob_ ? offsetof(JobFileHeader, Options) : 0;
    std::memcpy(bytes.data() + offset, &Block, sizeof Block);
    if (bytes != bytes_ && !ReplaceFileBytes(AFilePath(path_.string()), bytes))
        throw HostError(kFailed, fmt::format("cannot write {}; is the disk full?", path_.string()));
}

bool IsBlockFile(const std::filesystem::path& path) {
    const std::optional<std::string> bytes = ReadFileBytes(AFilePath(path.string()), kMostJobBytes);
    if (!bytes || bytes->size() != sizeof(DriverOptionBlock)) return false;
    DriverOptionBlock block;
    std::memcpy(&block, bytes->data(), sizeof block);
    const std::string_view name = FieldText(block.FileName, sizeof block.FileName);
    return name.empty() || name.starts_with("QL_");
}

std::string EncodeBlock(const DriverOptionBlock& block) {
    std::string text = "DriverOptionBinary=";
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&block);
    for (std::size_t i = 0; i < kTextFormBytes; ++i)
        text += fmt::format("{:02X}", bytes[i]);
    return text;
}

DriverOptionBlock DecodeBlock(const std::string& text) {
    DriverOptionBlock block = {};
    if (!DecodeDriverOptionsText(text.c_str(), block))
        throw HostError(kFailed, "the text holds no option block: DriverOptionBinary=… is missing");
    return block;
}
