#include "plugin/output/ChannelFiles.h"

#include <algorithm>

#include "PrinterDriver/Common/Xsrc/JobFault.h"

namespace {

/// Planes of one value are written from a block of about this size over and over.
constexpr int32_t kBlankBytes = 256 * 1024;

}  // namespace

void ChannelFiles::StartPage(const ChannelShape& shape, const PageFolder& folder,
                             ChannelNaming naming, int32_t channelCount) {
    Abandon();
    shape_ = shape;
    folder_ = &folder;
    naming_ = std::move(naming);
    reversedPath_ = AFilePath().Append("Temp").Append("channel_data");
    written_.assign(static_cast<std::size_t>(std::max(channelCount, 0)), 0);
}

bool ChannelFiles::IsWritten(int32_t channel) const {
    return written_[static_cast<std::size_t>(channel)] != 0;
}

void ChannelFiles::MarkWritten(int32_t channel) {
    written_[static_cast<std::size_t>(channel)] = 1;
}

std::unique_ptr<ExportBitmap> ChannelFiles::CreateExporter(const AString& fileName) const {
    const AFilePath path = folder_->File(fileName);
    const int64_t widthPixels = int64_t{shape_.lineBytes} * 8 / shape_.bits;
    // The exporter takes the resolution in double, the job delivers it in single precision.
    auto exporter = std::make_unique<ExportBitmap>(
        path.fullPath().c_str(), static_cast<uint32_t>(widthPixels),
        static_cast<uint32_t>(shape_.heightLines), static_cast<float>(shape_.xResolution),
        static_cast<float>(shape_.yResolution), shape_.bits, 0, 0, nullptr, nullptr, 0);
    if (!exporter->IsOpen()) Raise(kOutputFailed);
    return exporter;
}

bool ChannelFiles::Open(uint32_t separation, int32_t channel, const AString& name) {
    const bool first = !shape_.lineInterleaved || open_.empty();
    if (first) {
        if (!FlushReversed()) return false;
        open_.clear();
    }
    open_.push_back({separation, CreateExporter(naming_.FileName(channel, name))});
    // Without the temporary file the channel is written top line first.
    if (first && shape_.bottomLineFirst) {
        const auto channels = shape_.lineInterleaved ? static_cast<int64_t>(written_.size()) : 1;
        reversed_.Start(reversedPath_, int64_t{shape_.lineBytes} * shape_.heightLines * channels);
    }
    return true;
}

ChannelFiles::OpenChannel* ChannelFiles::Find(uint32_t separation) {
    for (OpenChannel& channel : open_) {
        if (channel.separation == separation) return &channel;
    }
    return nullptr;
}

bool ChannelFiles::WriteLine(uint32_t separation, const uint8_t* line) {
    if (reversed_.IsOpen()) {
        return reversed_.Append(line, static_cast<std::size_t>(shape_.lineBytes));
    }
    const OpenChannel* channel = Find(separation);
    return channel != nullptr && channel->exporter->WriteBand(1, shape_.lineBytes, line) != 0;
}

bool ChannelFiles::FlushReversed() {
    if (!reversed_.IsOpen()) return true;
    // A record holds one line of every open channel. A line that a channel file does not take is
    // logged by its exporter, and the short file tells.
    const int64_t recordBytes = static_cast<int64_t>(open_.size()) * shape_.lineBytes;
    return reversed_.TakeBackwards(recordBytes, [this](const uint8_t* record) {
        for (const OpenChannel& channel : open_) {
            channel.exporter->WriteBand(1, shape_.lineBytes, record);
            record += shape_.lineBytes;
        }
    });
}

bool ChannelFiles::WriteBlank(int32_t channel, const AString& name, uint8_t fill) {
    return WritePlane(
        channel < 0 && !name.empty() ? naming_.FileName(0, name) : naming_.FileName(channel), fill);
}

bool ChannelFiles::WritePlane(const AString& fileName, uint8_t fill) {
    const std::unique_ptr<ExportBitmap> exporter = OpenPlane(fileName);
    const int32_t blockLines = std::clamp(kBlankBytes / shape_.lineBytes, 1, shape_.heightLines);
    const auto lineBytes = static_cast<std::size_t>(shape_.lineBytes);
    const std::vector<uint8_t> block(static_cast<std::size_t>(blockLines) * lineBytes, fill);
    for (int32_t line = 0; line < shape_.heightLines; line += blockLines) {
        const int32_t lines = std::min(blockLines, shape_.heightLines - line);
        if (exporter->WriteBand(lines, shape_.lineBytes, block.data()) == 0) return false;
    }
    return true;
}

std::unique_ptr<ExportBitmap> ChannelFiles::OpenPlane(const AString& fileName) {
    open_.clear();
    return CreateExporter(fileName);
}

void ChannelFiles::Close() {
    open_.clear();
}

void ChannelFiles::Abandon() {
    open_.clear();
    reversed_.Discard();
}
