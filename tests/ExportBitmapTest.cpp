#include "host/ExportBitmap.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "FailingCalls.h"
#include "TestFolder.h"
#include "boundary/FileSizeLimit.h"

namespace {

struct Channel {
    const char* name;
    bool isTiff;
    uint32_t width;
    uint32_t height;
    int bits;

    uint32_t LineBytes() const { return width * static_cast<uint32_t>(bits) / 8; }
};

class Exporter : public ExportBitmap {
  public:
    Exporter(const std::string& path, const Channel& channel)
        : ExportBitmap(path.c_str(), channel.width, channel.height, 600, 1200.5, channel.bits, 0, 0,
                       nullptr, nullptr, 0),
          lineBytes_(static_cast<int>(channel.LineBytes())) {}
    bool Take(const std::string& lines) {
        return WriteBand(static_cast<int>(lines.size()) / lineBytes_, lineBytes_, lines.data()) !=
               0;
    }

  private:
    int lineBytes_;
};

std::string Lines(const Channel& channel, uint32_t count) {
    std::string bytes;
    for (uint32_t line = 0; line < count; ++line) {
        for (uint32_t i = 0; i < channel.LineBytes(); ++i)
            bytes += static_cast<char>(i * 13 + line * 7 + (line >> 8) + 1);
    }
    return bytes;
}

/// The pixels of a TIFF as an imaging tool reads them, which has nothing to say against it.
std::string TiffPixels(const std::string& path, const Channel& channel) {
    testing::internal::CaptureStderr();
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    uint32_t width = 0;
    uint32_t length = 0;
    uint16_t bits = 0;
    uint16_t photometric = 0;
    uint16_t unit = 0;
    float xResolution = 0;
    float yResolution = 0;
    std::string pixels;
    if (tiff != nullptr) {
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &length);
        TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
        TIFFGetField(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
        TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &xResolution);
        TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &yResolution);
        pixels.resize(std::size_t{channel.LineBytes()} * length);
        for (uint32_t line = 0; line < length; ++line)
            TIFFReadScanline(tiff, pixels.data() + std::size_t{channel.LineBytes()} * line, line);
        TIFFClose(tiff);
    }
    EXPECT_EQ(width, channel.width);
    EXPECT_EQ(bits, channel.bits);
    EXPECT_EQ(photometric, PHOTOMETRIC_MINISWHITE);
    EXPECT_EQ(unit, RESUNIT_INCH);
    EXPECT_EQ(xResolution, 600);
    EXPECT_EQ(yResolution, 1200.5F);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    return pixels;
}

TEST(ExportBitmap, HoldsTheLinesInOrder) {
    constexpr Channel kChannels[] = {
        {"xtif", false, 96, 7, 2},
        {"a.tif", true, 64, 5, 1},
        {"A.TIFF", true, 64, 1, 8},
        {"b.Tif", true, 32, 9, 4},
        {"many.tif.raw", false, 4096, 3000, 8},  // several blocks
        {"many.tif", true, 4096, 3000, 8},
        {"wide.tif", true, 2400000, 2, 8},  // lines larger than a block
    };
    constexpr uint32_t kBatches[] = {1, 200, 63, 64, 1, 672};
    const TestFolder folder;
    for (const Channel& channel : kChannels) {
        const std::string path = folder.Name(channel.name);
        for (const uint32_t count : {channel.height, channel.height - 1, 1U, 0U}) {
            const std::string lines = Lines(channel, count);
            folder.Write(channel.name, "older content");
            {
                Exporter exporter(path, channel);
                ASSERT_TRUE(exporter.IsOpen());
                std::size_t at = 0;
                for (std::size_t turn = 0; at < lines.size(); ++turn) {
                    const std::size_t batch = std::size_t{kBatches[turn % 6]} * channel.LineBytes();
                    EXPECT_TRUE(exporter.Take(lines.substr(at, batch)));
                    at += batch;
                }
                if (count == channel.height) {
                    EXPECT_FALSE(exporter.Take(Lines(channel, 1))) << "beyond the height";
                }
            }
            const bool isTiff = channel.isTiff && count > 0;
            const std::string held = isTiff ? TiffPixels(path, channel) : folder.Read(channel.name);
            EXPECT_TRUE(held == lines) << channel.name << " " << count;
            struct stat status = {};
            ASSERT_EQ(stat(path.c_str(), &status), 0);
            EXPECT_LT(static_cast<std::size_t>(status.st_blocks) * 512, lines.size() + 65536)
                << "room that a short file was to have";
        }
    }
}

// A disk that was full for a while: what comes then would stand behind a gap.
TEST(ExportBitmap, TakesNothingAfterAFailedWrite) {
    const TestFolder folder;
    setenv("QL_LOG_FILE", folder.Name("log").c_str(), 1);
    for (const Channel& channel :
         {Channel{"a.raw", false, 4096, 3000, 8}, {"a.tif", true, 4096, 3000, 8}}) {
        const std::string line = Lines(channel, 1);
        {
            Exporter exporter(folder.Name(channel.name), channel);
            uint32_t taken = 0;
            {
                const FileSizeLimit limit(100'000);
                while (taken < channel.height && exporter.Take(line))
                    ++taken;
            }
            EXPECT_LT(taken, 100U) << "lines that are gathered in memory";
            EXPECT_FALSE(exporter.Take(line));
        }
        EXPECT_LE(folder.Read(channel.name).size(), 100'000U);
    }
    unsetenv("QL_LOG_FILE");
}

// Only what the first block's arrival decides is looked at; nobody writes 4 GiB here.
TEST(ExportBitmap, PassesFourGibibytesAsBigTiff) {
    const TestFolder folder;
    for (const auto& [height, version] : {std::pair{0x3FF00U, '*'}, {0x40000U, '+'}}) {
        const Channel channel = {"x.tif", true, 131072, height, 1};
        const std::string lines = Lines(channel, 20);
        Exporter(folder.Name("x.tif"), channel).Take(lines);
        const std::string bytes = folder.Read("x.tif");
        EXPECT_NE(bytes.substr(0, 4).find(version), std::string::npos) << height;
        EXPECT_TRUE(TiffPixels(folder.Name("x.tif"), channel) == lines);
    }
}

// A file that is not there whole has said so, and a TIFF does not look as if it were.
TEST(ExportBitmap, MemoryThatIsMissing) {
    const TestFolder folder;
    for (const Channel& channel :
         {Channel{"x.raw", false, 4096, 300, 8}, Channel{"x.tif", true, 4096, 300, 8}}) {
        const std::string path = folder.Name(channel.name);
        const std::string lines = Lines(channel, channel.height);
        const std::size_t cut = std::size_t{channel.LineBytes()} * 250;
        const std::string parts[] = {lines.substr(0, cut), lines.substr(cut)};
        bool hasFailed = true;
        for (int64_t nth = 1; hasFailed; nth += kChildStride) {
            const int answer = InChild(folder.Name("stderr"), [&] {
                const FailingCall fault(Call::kAllocate, nth, false);
                Exporter exporter(path, channel);
                const bool isWhole = exporter.Take(parts[0]) && exporter.Take(parts[1]);
                return (isWhole ? 1 : 0) | (fault.HasFailed() ? 2 : 0);
            });
            ASSERT_GT(answer, 0) << nth << folder.Read("stderr");
            hasFailed = (answer & 2) != 0;
            const bool isWhole = (answer & 1) != 0;
            if (!channel.isTiff) {
                EXPECT_EQ(folder.Read(channel.name) == lines, isWhole) << nth;
            } else if (isWhole) {
                EXPECT_TRUE(TiffPixels(path, channel) == lines) << nth;
            } else {
                testing::internal::CaptureStderr();
                EXPECT_EQ(TIFFOpen(path.c_str(), "r"), nullptr) << nth;
                testing::internal::GetCapturedStderr();
            }
        }
    }
}

}  // namespace
