#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tiffio.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "TestFolder.h"
#include "host/ExportBitmap.h"

namespace {

struct Channel {
    const char* name;
    uint32_t width = 64;
    uint32_t height = 5;
    int bits = 1;

    uint32_t LineBytes() const { return width * static_cast<uint32_t>(bits) / 8; }
};

std::string Line(const Channel& channel, uint32_t line) {
    std::string bytes(channel.LineBytes(), '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 13 + std::size_t{line} * 7 + (line >> 8) + 1);
    }
    return bytes;
}

std::string Lines(const Channel& channel, uint32_t count) {
    std::string bytes;
    for (uint32_t line = 0; line < count; ++line)
        bytes += Line(channel, line);
    return bytes;
}

std::unique_ptr<ExportBitmap> Open(const std::string& path, const Channel& channel) {
    return std::make_unique<ExportBitmap>(path.c_str(), channel.width, channel.height, 600, 1200.5,
                                          channel.bits, 0, 0, nullptr, nullptr, 0);
}

int Write(ExportBitmap& exporter, const Channel& channel, const std::string& lines) {
    const auto lineBytes = static_cast<int>(channel.LineBytes());
    return exporter.WriteBand(static_cast<int>(lines.size()) / lineBytes, lineBytes, lines.data());
}

/// The pixels of a TIFF as an imaging tool reads them; "" when it has something to say against it.
std::string TiffPixels(const std::string& path, const Channel& channel, uint32_t lines) {
    testing::internal::CaptureStderr();
    std::string pixels;
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    if (tiff != nullptr) {
        uint32_t width = 0;
        uint32_t length = 0;
        uint16_t bits = 0;
        uint16_t photometric = 9;
        uint16_t unit = 0;
        float x = 0;
        float y = 0;
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &length);
        TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
        TIFFGetField(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
        TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x);
        TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y);
        EXPECT_EQ(width, channel.width);
        EXPECT_EQ(length, lines);
        EXPECT_EQ(bits, channel.bits);
        EXPECT_EQ(photometric, PHOTOMETRIC_MINISWHITE);
        EXPECT_EQ(unit, RESUNIT_INCH);
        EXPECT_EQ(x, 600.0F);
        EXPECT_EQ(y, 1200.5F);
        pixels.resize(static_cast<std::size_t>(TIFFScanlineSize(tiff)) * length);
        for (uint32_t line = 0; line < length; ++line) {
            TIFFReadScanline(tiff, pixels.data() + TIFFScanlineSize(tiff) * line, line, 0);
        }
        EXPECT_EQ(TIFFNumberOfDirectories(tiff), 1U);
        TIFFClose(tiff);
    }
    const std::string complaints = testing::internal::GetCapturedStderr();
    EXPECT_EQ(complaints, "");
    return complaints.empty() ? pixels : "";
}

const Channel kChannels[] = {
    {"a.raw", 64, 5, 1},         {"a", 96, 7, 2},
    {"a.tif", 64, 5, 1},         {"A.TIFF", 64, 1, 8},
    {"b.Tif", 32, 9, 4},         {"c.tif.raw", 32, 2, 1},
    {"many.raw", 4096, 3000, 8}, {"many.tif", 4096, 3000, 8},  // several blocks
    {"wide.tif", 2400000, 2, 8},                               // lines larger than a block
};

TEST(ExportBitmap, HoldsTheLinesInOrder) {
    const TestFolder folder;
    for (const Channel& channel : kChannels) {
        for (const uint32_t count : {channel.height, channel.height - 1, 1U, 0U}) {
            folder.Write(channel.name, "older content");
            {
                const auto exporter = Open(folder.Name(channel.name), channel);
                ASSERT_TRUE(exporter->IsOpen());
                EXPECT_EQ(folder.Read(channel.name), "");
                for (uint32_t line = 0; line < count; ++line) {
                    ASSERT_NE(Write(*exporter, channel, Line(channel, line)), 0);
                }
                if (count == channel.height) {
                    EXPECT_EQ(Write(*exporter, channel, Line(channel, 0)), 0)
                        << "beyond the height";
                    EXPECT_NE(folder.Read(channel.name), "")
                        << "all there before the exporter goes";
                }
            }
            const std::string expected = Lines(channel, count);
            const std::string bytes = folder.Read(channel.name);
            if (bytes.compare(0, 2, "II") == 0 || bytes.compare(0, 2, "MM") == 0) {
                EXPECT_EQ(TiffPixels(folder.Name(channel.name), channel, count) == expected, true)
                    << channel.name << " " << count;
            } else {
                EXPECT_EQ(bytes == expected, true) << channel.name << " " << count;
            }
        }
    }
}

TEST(ExportBitmap, ChoosesTheFormatByTheExtension) {
    const TestFolder folder;
    for (const auto& [name, isTiff] : {std::pair{"x.tif", true},
                                       {"x.TIF", true},
                                       {"x.tiff", true},
                                       {"x.TiFf", true},
                                       {"x.tif.raw", false},
                                       {"xtif", false},
                                       {"x.tifx", false},
                                       {"x.bmp", false},
                                       {"tif", false}}) {
        const Channel channel = {name, 32, 1, 8};
        Open(folder.Name(name), channel)->WriteBand(1, 32, std::string(32, 'x').data());
        EXPECT_EQ(folder.Read(name) != std::string(32, 'x'), isTiff) << name;
    }
}

TEST(ExportBitmap, TakesSeveralLinesAtOnce) {
    const TestFolder folder;
    for (const char* name : {"a.raw", "a.tif"}) {
        const Channel channel = {name, 4096, 1000, 8};
        const std::string lines = Lines(channel, channel.height);
        {
            const auto exporter = Open(folder.Name(name), channel);
            std::size_t at = 0;
            for (const std::size_t count : {1U, 200U, 63U, 64U, 672U}) {
                ASSERT_NE(Write(*exporter, channel, lines.substr(at * 4096, count * 4096)), 0);
                at += count;
            }
            EXPECT_EQ(at, 1000U);
        }
        const std::string bytes = folder.Read(name);
        EXPECT_EQ(
            (bytes.size() == lines.size() ? bytes : TiffPixels(folder.Name(name), channel, 1000)) ==
                lines,
            true)
            << name;
    }
}

TEST(ExportBitmap, RefusesWhatIsNoChannel) {
    const TestFolder folder;
    std::filesystem::create_directories(folder.Name("folder.tif"));
    const Channel good = {"", 32, 2, 1};
    EXPECT_FALSE(Open("", good)->IsOpen());
    EXPECT_FALSE(Open(folder.Name("folder.tif"), good)->IsOpen());
    EXPECT_FALSE(Open(folder.Name("missing/x.raw"), good)->IsOpen());
    ASSERT_EQ(mkfifo(folder.Name("pipe.raw").c_str(), 0600), 0);
    EXPECT_FALSE(Open(folder.Name("pipe.raw"), good)->IsOpen()) << "a pipe that nobody reads";
    const Channel kSizes[] = {{"", 0, 2, 1},  {"", 32, 0, 1},          {"", 0x80000000, 2, 1},
                              {"", 32, 2, 3}, {"", 32, 0x80000000, 1}, {"", 0x7FFFFFE0, 2, 16}};
    for (const Channel& channel : kSizes) {
        const auto exporter = Open(folder.Name("x.tif"), channel);
        EXPECT_FALSE(exporter->IsOpen()) << channel.width << " " << channel.height;
        EXPECT_EQ(exporter->WriteBand(1, 4, "1234"), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Name("x.tif")));
    const auto exporter = Open(folder.Name("x.raw"), good);
    EXPECT_EQ(exporter->WriteBand(1, 3, "123"), 0) << "another line size";
    EXPECT_EQ(exporter->WriteBand(1, -4, "1234"), 0);
    EXPECT_EQ(exporter->WriteBand(0, 4, "1234"), 0);
    EXPECT_EQ(exporter->WriteBand(3, 4, "123456789012"), 0) << "beyond the height";
    EXPECT_EQ(exporter->WriteBand(1, 4, nullptr), 0);
    EXPECT_NE(exporter->WriteBand(2, 4, "12345678"), 0);
}

/// What the log received while this object lives.
class Log {
  public:
    explicit Log(const TestFolder& folder) : folder_(folder) {
        setenv("QL_LOG_FILE", folder.Name("log").c_str(), 1);
    }
    ~Log() { unsetenv("QL_LOG_FILE"); }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    std::string Text() const { return folder_.Read("log"); }

  private:
    const TestFolder& folder_;
};

TEST(ExportBitmap, AFullDiskIsAnsweredByTheLastLineAtTheLatest) {
    for (const char* name : {"x.raw", "x.tif"}) {
        const TestFolder folder;
        const Log log(folder);
        std::filesystem::create_symlink("/dev/full", folder.Name(name));
        const Channel channel = {name, 64, 5, 1};
        {
            const auto exporter = Open(folder.Name(name), channel);
            ASSERT_TRUE(exporter->IsOpen());
            for (uint32_t line = 0; line < 4; ++line) {
                EXPECT_NE(Write(*exporter, channel, Line(channel, line)), 0) << "gathered";
            }
            EXPECT_EQ(Write(*exporter, channel, Line(channel, 4)), 0);
            EXPECT_EQ(Write(*exporter, channel, Line(channel, 4)), 0) << "from then on";
        }
        const std::string text = log.Text();
        EXPECT_EQ(text.rfind("E host\\ExportBitmap(", 0), 0U) << text;
        EXPECT_NE(text.find(folder.Name(name)), std::string::npos);
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
    }
}

TEST(ExportBitmap, AFailureAnywhereIsAnswered) {
    // A limit on the file's size stands for a disk that fills up: in the lines, with the last
    // ones, or only when the directory is written.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit former = {};
    getrlimit(RLIMIT_FSIZE, &former);
    const TestFolder folder;
    const Log log(folder);
    for (const char* name : {"x.raw", "x.tif"}) {
        const Channel channel = {name, 4096, 200, 8};
        const uint64_t bytes = uint64_t{4096} * 200;
        for (const uint64_t room : {uint64_t{4}, uint64_t{300000}, bytes - 1, bytes, bytes + 9,
                                    bytes + 100, bytes + 10000}) {
            bool taken = true;
            {
                const auto exporter = Open(folder.Name(name), channel);
                const rlimit limit = {room, former.rlim_max};
                setrlimit(RLIMIT_FSIZE, &limit);
                for (uint32_t line = 0; line < channel.height; ++line) {
                    const int answer = Write(*exporter, channel, Line(channel, line));
                    EXPECT_TRUE(taken || answer == 0) << "a failure is not taken back";
                    taken = answer != 0;
                }
                setrlimit(RLIMIT_FSIZE, &former);
            }
            const bool isTiff = name[2] == 't';
            const bool fits = room >= bytes + (isTiff ? 10000 : 0);
            EXPECT_EQ(taken, fits) << name << " " << room;
            if (taken && isTiff) {
                EXPECT_EQ(TiffPixels(folder.Name(name), channel, 200).size(), bytes);
            }
        }
    }
    std::signal(SIGXFSZ, SIG_DFL);
}

TEST(ExportBitmap, PassesFourGibibytesAsBigTiff) {
    const TestFolder folder;
    // Only what the first block's arrival decides is looked at; nobody writes 4 GiB here.
    for (const auto& [height, version] : {std::pair{0x3FF00U, '*'}, {0x40000U, '+'}}) {
        const Channel channel = {"x.tif", 131072, height, 1};
        {
            const auto exporter = Open(folder.Name("x.tif"), channel);
            const std::string line(16384, 'x');
            for (int i = 0; i < 20; ++i)
                exporter->WriteBand(1, 16384, line.data());
        }
        const std::string bytes = folder.Read("x.tif");
        EXPECT_EQ(bytes.substr(0, 4).find(version) != std::string::npos, true) << height;
        EXPECT_EQ(TiffPixels(folder.Name("x.tif"), channel, 20),
                  std::string(std::size_t{20} * 16384, 'x'));
    }
}

}  // namespace
