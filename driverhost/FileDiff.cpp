#include "driverhost/FileDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "driverhost/ChannelFile.h"
#include "driverhost/HostError.h"
#include "driverhost/Interrupt.h"
#include "driverhost/Pixels.h"
#include "platform/RandomAccessFile.h"

namespace fs = std::filesystem;

namespace {

void OpenFile(RandomAccessFile& file, const fs::path& path) {
    if (!file.Open(path.string().c_str()))
        throw HostError(kFailed, fmt::format("{} cannot be read", path.string()));
}

/// Visits two files block by block up to the end of the shorter one, until the visit answers
/// false.
template <class Visit>
void VisitBlocks(const fs::path& pathA, const fs::path& pathB, Visit visit) {
    constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
    RandomAccessFile a;
    RandomAccessFile b;
    OpenFile(a, pathA);
    OpenFile(b, pathB);
    std::vector<uint8_t> blockA(kBlockBytes);
    std::vector<uint8_t> blockB(kBlockBytes);
    const uint64_t end = std::min(a.Size(), b.Size());
    for (uint64_t offset = 0; offset < end;) {
        StopWhenInterrupted();
        const auto count = static_cast<std::size_t>(std::min<uint64_t>(kBlockBytes, end - offset));
        if (a.ReadAt(offset, blockA.data(), count) != count)
            throw HostError(kFailed, fmt::format("{} cannot be read to its end", pathA.string()));
        if (b.ReadAt(offset, blockB.data(), count) != count)
            throw HostError(kFailed, fmt::format("{} cannot be read to its end", pathB.string()));
        if (!visit(offset, std::span(blockA).first(count), std::span(blockB).first(count))) return;
        offset += count;
    }
}

uint64_t SizeOf(const fs::path& path) {
    RandomAccessFile file;
    OpenFile(file, path);
    return file.Size();
}

bool AreSameBytes(const fs::path& a, const fs::path& b) {
    bool same = SizeOf(a) == SizeOf(b);
    if (same)
        VisitBlocks(a, b,
                    [&same](uint64_t, std::span<const uint8_t> x, std::span<const uint8_t> y) {
                        same = std::memcmp(x.data(), y.data(), x.size()) == 0;
                        return same;
                    });
    return same;
}

/// Adds a part to the sentence that says how files differ.
void Add(std::string& text, const std::string& part) {
    text += (text.empty() ? "" : "; ") + part;
}

FileDifference ByteDifference(const fs::path& a, const fs::path& b) {
    FileDifference::Bytes bytes;
    VisitBlocks(a, b, [&](uint64_t offset, std::span<const uint8_t> x, std::span<const uint8_t> y) {
        for (std::size_t i = 0; i < x.size(); ++i) {
            if (x[i] == y[i]) continue;
            if (bytes.Count++ == 0) bytes.Byte = offset + i;
        }
        return true;
    });
    FileDifference difference;
    if (bytes.Count > 0) {
        difference.InBytes = bytes;
        difference.Text =
            fmt::format("differs from byte {} on; {} bytes differ", bytes.Byte, bytes.Count);
    }
    if (const uint64_t bytesA = SizeOf(a), bytesB = SizeOf(b); bytesA != bytesB)
        Add(difference.Text, fmt::format("{} bytes and {} bytes", bytesA, bytesB));
    return difference;
}

void CompareLines(ChannelFile& a, ChannelFile& b, FileDifference& result) {
    const ChannelShape& shape = a.Shape();
    FileDifference::Pixels pixels;
    const int64_t lines = std::min(shape.Lines, b.Shape().Lines);
    for (int64_t i = 0; i < lines; ++i) {
        StopWhenInterrupted();
        const LineDifference difference = Compare(a.Line(i), b.Line(i), shape.Bits);
        if (difference.PixelCount == 0) continue;
        if (pixels.Count == 0) {
            pixels.Line = i;
            pixels.Pixel = difference.FirstPixel;
        }
        pixels.Count += difference.PixelCount;
    }
    if (pixels.Count == 0) return;
    result.InPixels = pixels;
    Add(result.Text, fmt::format("differs from line {}, pixel {} on; {} pixel{} differ{}",
                                 pixels.Line, pixels.Pixel, pixels.Count,
                                 pixels.Count == 1 ? "" : "s", pixels.Count == 1 ? "s" : ""));
}

std::optional<FileDifference> ChannelDifference(ChannelFile& a, ChannelFile& b) {
    const ChannelShape& x = a.Shape();
    const ChannelShape& y = b.Shape();
    FileDifference difference;
    std::string& text = difference.Text;
    if (x.WidthPixels != y.WidthPixels || x.Bits != y.Bits) {
        text = fmt::format("lines of {} pixels of {} bits and of {} pixels of {} bits",
                           x.WidthPixels, x.Bits, y.WidthPixels, y.Bits);
    } else {
        CompareLines(a, b, difference);
        if (x.Lines != y.Lines) Add(text, fmt::format("{} lines and {} lines", x.Lines, y.Lines));
    }
    if (x.XResolution != y.XResolution || x.YResolution != y.YResolution)
        Add(text, fmt::format("{} x {} dpi and {} x {} dpi", x.XResolution, x.YResolution,
                              y.XResolution, y.YResolution));
    if (text.empty()) return std::nullopt;
    return difference;
}

/// Null when the file is no channel, or its shape is not known.
std::unique_ptr<ChannelFile> TryChannel(const fs::path& path,
                                        const std::optional<PrintedShape>& shape) {
    try {
        if (IsTiffName(path)) return OpenTiffChannel(path);
        if (shape) return OpenRawChannel(path, shape->PaddedWidth(), shape->Bits);
    } catch (const HostError&) {
        // Its bytes can still be compared.
    }
    return nullptr;
}

}  // namespace

std::optional<FileDifference> DifferenceOf(const fs::path& a, const fs::path& b,
                                           const RawShapeOptions& options, PrintedShapes& printed) {
    if (AreSameBytes(a, b)) return std::nullopt;
    const std::unique_ptr<ChannelFile> channelA = TryChannel(a, ShapeOf(a, options, printed));
    const std::unique_ptr<ChannelFile> channelB = TryChannel(b, ShapeOf(b, options, printed));
    if (channelA != nullptr && channelB != nullptr) return ChannelDifference(*channelA, *channelB);
    return ByteDifference(a, b);
}
