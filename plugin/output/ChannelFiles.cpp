#include "plugin/output/ChannelFiles.h"

#include <algorithm>

#include "PrinterDriver/Common/Xsrc/JobFault.h"
#include "host/LogText.h"

namespace {

/// Planes of one value are written from a block of about this size over and over.
constexpr int32_t kBlankBytes = 256 * 1024;

constexpr const char* kSource = "plugin\\output\\ChannelFiles";
constexpr const char* kNotGathered = "the temporary file does not take a line";

}  // namespace

void ChannelFiles::StartPage(JobReport& report, const ChannelShape& shape, const PageFolder& folder,
                             ChannelNaming naming, int32_t channelCount) {
    Abandon();
    report_ = &report;
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

ChannelFiles::OpenChannel ChannelFiles::Create(uint32_t separation, const AString& fileName) const {
    const AFilePath path = folder_->File(fileName);
    const int64_t widthPixels = int64_t{shape_.lineBytes} * 8 / shape_.bits;
    // The exporter takes the resolution in double, the job delivers it in single precision.
    auto exporter = std::make_unique<ExportBitmap>(
        path.fullPath().c_str(), static_cast<uint32_t>(widthPixels),
        static_cast<uint32_t>(shape_.heightLines), static_cast<float>(shape_.xResolution),
        static_cast<float>(shape_.yResolution), shape_.bits, 0, 0, nullptr, nullptr, 0);
    if (!exporter->IsOpen()) {
        report_->Fail({kSource, __LINE__}, "the channel file cannot be created", path.shownName(),
                      path.isValid() ? exporter->SystemError() : 0);
        Raise(kOutputFailed);
    }
    return {separation, path.fullPath(), std::move(exporter)};
}

bool ChannelFiles::Open(uint32_t separation, int32_t channel, const AString& name) {
    const bool first = !shape_.lineInterleaved || open_.empty();
    if (first) {
        if (!FlushReversed()) return false;
        Close();
    }
    open_.push_back(Create(separation, naming_.FileName(channel, name)));
    if (first && shape_.bottomLineFirst) StartGathering(open_.back());
    return true;
}

/// Without the temporary file the channel is written top line first.
void ChannelFiles::StartGathering(const OpenChannel& channel) {
    const auto channels = shape_.lineInterleaved ? static_cast<int64_t>(written_.size()) : 1;
    if (reversed_.Start(reversedPath_, int64_t{shape_.lineBytes} * shape_.heightLines * channels))
        return;
    LogText what;
    what << "channels are written top line first, from " << channel.path
         << " on, for want of their temporary file";
    report_->Note(Doubt::kReversedData, {kSource, __LINE__}, what.View(), reversedPath_.shownName(),
                  reversed_.SystemError());
}

ChannelFiles::OpenChannel* ChannelFiles::Find(uint32_t separation) {
    for (OpenChannel& channel : open_) {
        if (channel.separation == separation) return &channel;
    }
    return nullptr;
}

bool ChannelFiles::WriteLine(uint32_t separation, const uint8_t* line) {
    if (reversed_.IsOpen()) {
        if (reversed_.Append(line, static_cast<std::size_t>(shape_.lineBytes))) return true;
        report_->Fail({kSource, __LINE__}, kNotGathered, reversedPath_.shownName(),
                      reversed_.SystemError());
        return false;
    }
    const OpenChannel* channel = Find(separation);
    if (channel == nullptr) return false;
    if (channel->exporter->WriteBand(1, shape_.lineBytes, line) != 0) return true;
    report_->Note(Doubt::kChannelLine, {kSource, __LINE__}, "a line cannot be written",
                  channel->path, channel->exporter->SystemError());
    return false;
}

void ChannelFiles::NoteShort(const OpenChannel& channel) {
    report_->Note(Doubt::kShortChannel, {kSource, __LINE__},
                  "the file lacks lines that it did not take", channel.path,
                  channel.exporter->SystemError());
}

bool ChannelFiles::FlushReversed() {
    if (!reversed_.IsOpen()) return true;
    // A record holds one line of every open channel.
    const int64_t recordBytes = static_cast<int64_t>(open_.size()) * shape_.lineBytes;
    const GatheredData outcome =
        reversed_.TakeBackwards(recordBytes, [this](const uint8_t* record) {
            for (const OpenChannel& channel : open_) {
                if (channel.exporter->WriteBand(1, shape_.lineBytes, record) == 0)
                    NoteShort(channel);
                record += shape_.lineBytes;
            }
        });
    if (outcome == GatheredData::kNotWritten)
        report_->Fail({kSource, __LINE__}, kNotGathered, reversedPath_.shownName(),
                      reversed_.SystemError());
    if (outcome == GatheredData::kNotReadable) {
        LogText what;
        what << open_.back().path << " lacks lines that cannot be read back";
        report_->Note(Doubt::kShortChannel, {kSource, __LINE__}, what.View(),
                      reversedPath_.shownName(), reversed_.SystemError());
    }
    return outcome != GatheredData::kNotWritten;
}

bool ChannelFiles::WriteBlank(int32_t channel, const AString& name, uint8_t fill) {
    return WritePlane(
        channel < 0 && !name.empty() ? naming_.FileName(0, name) : naming_.FileName(channel), fill);
}

bool ChannelFiles::WritePlane(const AString& fileName, uint8_t fill) {
    OpenPlane(fileName);
    const OpenChannel& plane = open_.front();
    const int32_t blockLines = std::clamp(kBlankBytes / shape_.lineBytes, 1, shape_.heightLines);
    const auto lineBytes = static_cast<std::size_t>(shape_.lineBytes);
    const std::vector<uint8_t> block(static_cast<std::size_t>(blockLines) * lineBytes, fill);
    for (int32_t line = 0; line < shape_.heightLines; line += blockLines) {
        const int32_t lines = std::min(blockLines, shape_.heightLines - line);
        if (plane.exporter->WriteBand(lines, shape_.lineBytes, block.data()) != 0) continue;
        report_->Fail({kSource, __LINE__}, "a line cannot be written", plane.path,
                      plane.exporter->SystemError());
        return false;
    }
    Close();
    return true;
}

void ChannelFiles::OpenPlane(const AString& fileName) {
    Close();
    open_.push_back(Create(0, fileName));
}

void ChannelFiles::AddPlaneLine(const uint8_t* line) {
    if (open_.front().exporter->WriteBand(1, shape_.lineBytes, line) == 0) NoteShort(open_.front());
}

void ChannelFiles::Close() {
    for (const OpenChannel& channel : open_)
        if (channel.exporter->Close() == 0) NoteShort(channel);
    open_.clear();
}

void ChannelFiles::Abandon() noexcept {
    reversed_.Discard();
    open_.clear();
}
