#include "plugin/output/WhiteInk.h"

#include <algorithm>

#include "host/AFile.h"
#include "host/CopyRow.h"
#include "platform/SystemError.h"

namespace {

/// Lines move through the file in blocks of about this size.
constexpr int64_t kBlockBytes = int64_t{256} * 1024;

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

void WhiteInk::StartPage(JobReport& report, int32_t whiteType, int32_t lineBytes,
                         int32_t heightLines) {
    Discard();
    report_ = &report;
    path_ = AFilePath().Append("Temp").Append("TempWhiteData");
    whiteType_ = whiteType;
    lineBytes_ = lineBytes;
    heightLines_ = heightLines;
    gathers_ = IsWhiteUnion(whiteType);
    readsReady_ = whiteType > 0 && !gathers_ && !IsPlainWhite(whiteType);
    blockLines_ = std::max<int64_t>(kBlockBytes / std::max<int64_t>(lineBytes_, 1), 1);
    block_ = -1;
    isChanged_ = false;
    gatheredLines_ = 0;
    if (gathers_) AFile::DeleteFileA(path_, 1);
}

bool WhiteInk::OpenFile() {
    lines_.resize(static_cast<std::size_t>(blockLines_ * lineBytes_));
    if (!path_.isValid() || !union_.Create(path_.fullPath())) return false;
    union_.Reserve(lineBytes_ * heightLines_);
    return true;
}

void WhiteInk::Gather(uint32_t separation, int32_t row, const uint8_t* line) {
    const bool isFirst = separation == 0;
    if (isFirst && row == 0 && !union_.IsOpen() && !OpenFile()) {
        GiveUp();
        return;
    }
    // Whatever comes before separation 0 finds no line to unite with.
    if (!union_.IsOpen() || (isFirst ? row != gatheredLines_ : row >= gatheredLines_)) return;
    if (!MoveTo(row / blockLines_)) {
        GiveUp();
        return;
    }
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
    return blockFilled_ == 0 || union_.ReadAt(firstLine * lineBytes_, lines_.data(),
                                              static_cast<std::size_t>(blockFilled_ * lineBytes_));
}

bool WhiteInk::WriteBack() {
    if (!isChanged_) return true;
    isChanged_ = false;
    return union_.WriteAt(block_ * blockLines_ * lineBytes_, lines_.data(),
                          static_cast<std::size_t>(blockFilled_ * lineBytes_));
}

/// A union that lacks lines must not print as white: the page gets none.
void WhiteInk::GiveUp() {
    gathers_ = false;
    const int reason = union_.SystemError();
    union_.Discard();
    lines_ = {};
    report_->Note(Doubt::kWhiteUnion, {"plugin\\output\\WhiteInk", __LINE__},
                  "the white file gets no lines, their union is lost", path_.shownName(), reason);
}

bool WhiteInk::StartReading(LineReader& reader, bool bottomLineFirst) {
    if (lineBytes_ <= 0) return false;
    if (readsReady_) {
        if (!OpenReady()) return false;
        reader.Start(
            [this](int64_t offset, void* data, std::size_t count) {
                return ready_.ReadAt(static_cast<uint64_t>(offset), data, count, &readError_) ==
                       count;
            },
            static_cast<int64_t>(ready_.Size()), lineBytes_, bottomLineFirst);
        return true;
    }
    const bool gathered = gathers_ && union_.IsOpen();
    if (gathered && !WriteBack()) GiveUp();
    gathers_ = false;
    if (!union_.IsOpen()) return false;
    reader.Start([this](int64_t offset, void* data,
                        std::size_t count) { return union_.ReadAt(offset, data, count); },
                 gatheredLines_ * lineBytes_, lineBytes_, bottomLineFirst);
    return true;
}

/// Opens what stands ready for the white file, if anything does.
bool WhiteInk::OpenReady() {
    constexpr LogPlace kPlace = {"plugin\\output\\WhiteInk", __LINE__};
    ForgetSystemError();
    if (!path_.isValid() || !ready_.Open(path_.fullPath().c_str())) {
        report_->Note(Doubt::kReadyWhite, kPlace, "no white stands ready", path_.shownName(),
                      LastSystemError());
        return false;
    }
    if (static_cast<int64_t>(ready_.Size()) != lineBytes_ * heightLines_)
        report_->Note(Doubt::kReadyWhite, kPlace,
                      "the white that stands ready is not of the page's size", path_.shownName());
    return true;
}

const uint8_t* WhiteInk::ReadLine(LineReader& reader) const {
    uint8_t* const line = reader.Next();
    if (line == nullptr || whiteType_ != kWhiteUnderNoInk) return line;
    for (int32_t i = 0; i < lineBytes_; ++i)
        line[i] = static_cast<uint8_t>(~line[i]);
    return line;
}

void WhiteInk::EndReading(const LineReader& reader) {
    const int reason = union_.IsOpen() ? union_.SystemError() : readError_;
    Discard();
    if (!reader.HasFailed()) return;
    report_->Note(Doubt::kWhiteUnion, {"plugin\\output\\WhiteInk", __LINE__},
                  "the white file ends early, its lines cannot be read back", path_.shownName(),
                  reason);
}

void WhiteInk::Discard() noexcept {
    gathers_ = false;
    union_.Discard();
    ready_.Close();
    if (readsReady_) AFile::DeleteFileA(path_, 1);
    readsReady_ = false;
    lines_ = {};
}
