#include "plugin/output/WhiteInk.h"

#include <algorithm>

#include "host/AFile.h"
#include "host/CopyRow.h"

namespace {

/// Lines move through the file in blocks of about this size.
constexpr int64_t kBlockBytes = int64_t{256} * 1024;

bool IsGathered(int32_t whiteType) {
    return whiteType == kWhiteUnderNoInk || whiteType == kWhiteUnderInk;
}

/// ORs `line` into `target`; whether that changed anything.
bool Unite(uint8_t* target, const uint8_t* line, std::size_t count) {
    uint8_t added = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto united = static_cast<uint8_t>(target[i] | line[i]);
        added = static_cast<uint8_t>(added | (united ^ target[i]));
        target[i] = united;
    }
    return added != 0;
}

}  // namespace

void WhiteInk::StartPage(int32_t whiteType, int32_t lineBytes, int32_t heightLines) {
    Discard();
    path_ = AFilePath().Append("Temp").Append("TempWhiteData");
    whiteType_ = whiteType;
    lineBytes_ = lineBytes;
    heightLines_ = heightLines;
    gathers_ = IsGathered(whiteType);
    blockLines_ = std::max<int64_t>(kBlockBytes / std::max<int64_t>(lineBytes_, 1), 1);
    block_ = -1;
    isChanged_ = false;
    gatheredLines_ = 0;
    if (gathers_) AFile::DeleteFileA(path_, 1);
}

bool WhiteInk::OpenFile() {
    stream_ = OpenStream(path_.fullPath().c_str(), "wb+");
    if (stream_ == nullptr) return false;
    // Whole blocks go to the system at once; a buffer would only copy them.
    std::setvbuf(stream_.get(), nullptr, _IONBF, 0);
    hasFile_ = true;
    ReserveSpace(stream_.get(), int64_t{lineBytes_} * heightLines_);
    lines_.resize(static_cast<std::size_t>(blockLines_ * lineBytes_));
    return true;
}

void WhiteInk::Gather(uint32_t separation, int32_t row, const uint8_t* line) {
    const bool isFirst = separation == 0;
    if (isFirst && row == 0 && !hasFile_ && !OpenFile()) return GiveUp();
    // Whatever comes before separation 0 finds no line to unite with.
    if (!hasFile_ || (isFirst ? row != gatheredLines_ : row >= gatheredLines_)) return;
    if (!MoveTo(row / blockLines_)) return GiveUp();
    const auto count = static_cast<std::size_t>(lineBytes_);
    uint8_t* const target = lines_.data() + row % blockLines_ * lineBytes_;
    if (isFirst) {
        CopyRow(target, line, count);
        blockFilled_ = row % blockLines_ + 1;
        ++gatheredLines_;
        isChanged_ = true;
    } else if (Unite(target, line, count)) {
        isChanged_ = true;
    }
}

bool WhiteInk::MoveTo(int64_t block) {
    if (block == block_) return true;
    if (!WriteBack()) return false;
    block_ = block;
    const int64_t firstLine = block * blockLines_;
    blockFilled_ = std::clamp<int64_t>(gatheredLines_ - firstLine, 0, blockLines_);
    if (blockFilled_ == 0) return true;
    const auto count = static_cast<std::size_t>(blockFilled_ * lineBytes_);
    return SeekStream(stream_.get(), firstLine * lineBytes_, SEEK_SET) &&
           std::fread(lines_.data(), 1, count, stream_.get()) == count;
}

bool WhiteInk::WriteBack() {
    if (!isChanged_) return true;
    isChanged_ = false;
    const auto count = static_cast<std::size_t>(blockFilled_ * lineBytes_);
    return SeekStream(stream_.get(), block_ * blockLines_ * lineBytes_, SEEK_SET) &&
           std::fwrite(lines_.data(), 1, count, stream_.get()) == count;
}

/// A union that lacks lines must not print as white: the page gets none.
void WhiteInk::GiveUp() {
    gathers_ = false;
    RemoveFile();
}

bool WhiteInk::EndGathering() {
    if (stream_ == nullptr) return false;
    // A full disk can show as late as at the close.
    const bool written = WriteBack();
    return std::fclose(stream_.release()) == 0 && written;
}

bool WhiteInk::StartReading(LineReader& reader, bool bottomLineFirst) {
    if (IsGathered(whiteType_) && (!hasFile_ || !EndGathering())) return false;
    gathers_ = false;
    hasFile_ = true;  // what stands ready for the other treatments goes as well
    return lineBytes_ > 0 && reader.Open(path_, lineBytes_, bottomLineFirst);
}

const uint8_t* WhiteInk::ReadLine(LineReader& reader) const {
    uint8_t* const line = reader.Next();
    if (line == nullptr || whiteType_ != kWhiteUnderNoInk) return line;
    for (int32_t i = 0; i < lineBytes_; ++i)
        line[i] = static_cast<uint8_t>(~line[i]);
    return line;
}

void WhiteInk::RemoveFile() {
    stream_.reset();
    if (hasFile_) AFile::DeleteFileA(path_, 1);
    hasFile_ = false;
    lines_ = {};
}

void WhiteInk::Discard() {
    gathers_ = false;
    RemoveFile();
}
