#include "host/ExportBitmap.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/ChannelWriter.h"
#include "host/CopyRow.h"
#include "host/Text.h"
#include "platform/SystemError.h"

namespace {

/// Lines are handed on in blocks of about this size: large enough that the system's calls cost
/// nothing beside the copying, small enough to stay in the processor's cache.
constexpr uint64_t kBlockBytes = uint64_t{256} * 1024;

/// What the system gets at a time, and whole multiples of it straight from a block: writes that
/// start at such multiples in the file cost it a tenth less than others.
constexpr std::size_t kStreamBytes = std::size_t{128} * 1024;

/// The format that the arguments ask for; nothing when there can be no such file.
std::optional<ChannelFormat> CheckedFormat(uint32_t width, uint32_t height, double xResolution,
                                           double yResolution, int bits) {
    constexpr uint32_t kLargest = std::numeric_limits<int32_t>::max();
    if (bits != 1 && bits != 2 && bits != 4 && bits != 8) return std::nullopt;
    if (width == 0 || width > kLargest || height == 0 || height > kLargest) return std::nullopt;
    const uint64_t lineBytes = (uint64_t{width} * static_cast<uint64_t>(bits) + 7) / 8;
    if (lineBytes > kLargest) return std::nullopt;
    const uint64_t blockLines = std::clamp<uint64_t>(kBlockBytes / lineBytes, 1, height);
    return ChannelFormat{width,
                         height,
                         xResolution,
                         yResolution,
                         bits,
                         lineBytes,
                         static_cast<uint32_t>(blockLines)};
}

bool IsTiffName(std::string_view path) {
    const auto endsWith = [path](std::string_view extension) {
        return path.size() >= extension.size() &&
               EqualsIgnoringCase(path.substr(path.size() - extension.size()), extension);
    };
    return endsWith(".tif") || endsWith(".tiff");
}

}  // namespace

struct ExportBitmap::File {
    File(const char* name, Stream opened, const ChannelFormat& channelFormat)
        : path(name), format(channelFormat), stream(std::move(opened)) {
        std::setvbuf(stream.get(), streamBuffer.data(), _IOFBF, kStreamBytes);
        writer = IsTiffName(path) ? MakeTiffWriter(stream.get(), format)
                                  : MakeRawWriter(stream.get(), format);
    }

    /// Takes `count` lines of `data`, which the height has room for.
    bool Take(const uint8_t* data, uint32_t count) {
        if (lines == 0)
            ReserveSpace(stream.get(), static_cast<int64_t>(format.lineBytes * format.height));
        while (count > 0) {
            const uint32_t taken = std::min(count, format.blockLines - gatheredLines);
            if (taken == format.blockLines) {
                if (!writer->Write(data, taken)) return false;  // a whole block, not copied
            } else {
                Gather(data, taken);
                if (gatheredLines == format.blockLines && !WriteGathered()) return false;
            }
            data += format.lineBytes * taken;
            lines += taken;
            count -= taken;
        }
        return lines < format.height || Close();
    }

    /// Hands everything to the system; the file is complete then.
    bool Close() {
        const bool complete = lines == 0 || (WriteGathered() && writer->Complete());
        writer.reset();
        if (lines < format.height) ReleaseSpace(stream.get());
        return std::fclose(stream.release()) == 0 && complete;
    }

    /// Notes that the file lacks something, and the system's reason.
    void Fail() {
        systemError = LastSystemError();
        hasFailed = true;
    }

    std::string path;
    ChannelFormat format;
    std::vector<char> streamBuffer = std::vector<char>(kStreamBytes);  // of the stream
    Stream stream;                                                     // null once closed
    std::unique_ptr<ChannelWriter> writer;
    uint32_t lines = 0;  // received
    bool hasFailed = false;
    int systemError = 0;

  private:
    void Gather(const uint8_t* data, uint32_t count) {
        const auto lineBytes = static_cast<std::size_t>(format.lineBytes);
        if (block.empty()) block.resize(lineBytes * format.blockLines);
        CopyRow(block.data() + lineBytes * gatheredLines, data, lineBytes * count);
        gatheredLines += count;
    }

    bool WriteGathered() {
        if (gatheredLines == 0) return true;
        const bool written = writer->Write(block.data(), gatheredLines);
        gatheredLines = 0;
        return written;
    }

    std::vector<uint8_t> block;
    uint32_t gatheredLines = 0;  // at the block's front
};

ExportBitmap::ExportBitmap(const char* path, uint32_t width, uint32_t height, double xResolution,
                           double yResolution, int bits, int /*reserved1*/, int /*reserved2*/,
                           void* /*reserved3*/, void* /*reserved4*/, int /*reserved5*/) {
    const std::optional<ChannelFormat> format =
        CheckedFormat(width, height, xResolution, yResolution, bits);
    if (path == nullptr || !format) return;
    ForgetSystemError();
    try {
        Stream stream = OpenStream(path, "wb");
        systemError_ = LastSystemError();
        if (stream != nullptr) file_ = std::make_unique<File>(path, std::move(stream), *format);
    } catch (...) {
        // Out of memory: not open.
    }
}

ExportBitmap::~ExportBitmap() {
    Close();
}

bool ExportBitmap::IsOpen() const {
    return file_ != nullptr;
}

int ExportBitmap::SystemError() const {
    return file_ != nullptr ? file_->systemError : systemError_;
}

int ExportBitmap::WriteBand(int lineCount, int bytesPerLine, const void* data) {
    if (file_ == nullptr || file_->hasFailed || data == nullptr || lineCount < 1) return 0;
    const auto count = static_cast<uint32_t>(lineCount);
    if (bytesPerLine < 0 || static_cast<uint64_t>(bytesPerLine) != file_->format.lineBytes ||
        count > file_->format.height - file_->lines) {
        return 0;
    }
    ForgetSystemError();
    try {
        if (file_->Take(static_cast<const uint8_t*>(data), count)) return 1;
        file_->Fail();
    } catch (...) {
        file_->hasFailed = true;  // out of memory
    }
    return 0;
}

int ExportBitmap::Close() noexcept {
    if (file_ == nullptr) return 0;
    if (file_->stream == nullptr || file_->hasFailed) {
        if (file_->stream != nullptr) {
            ReleaseSpace(file_->stream.get());
            file_->writer.reset();
            file_->stream.reset();
        }
        return file_->hasFailed ? 0 : 1;
    }
    ForgetSystemError();
    try {
        if (file_->Close()) return 1;
        file_->Fail();
    } catch (...) {
        file_->hasFailed = true;  // out of memory; the short file is there to be seen
    }
    return 0;
}
