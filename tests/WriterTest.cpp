// What no host reaches: streaming to the host's output object, row repetition, the file class, the
// module state.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "PrinterDriver/Common/Xsrc/AFM_File.h"
#include "PrinterDriver/Common/Xsrc/RepackBits.h"
#include "TestFolder.h"
#include "plugin/output/RTL.h"

namespace {

namespace fs = std::filesystem;

class WriterTest : public testing::Test {
  protected:
    WriterTest() { setenv("QL_LOG_FILE", folder_.Name("log").c_str(), 1); }
    ~WriterTest() override { unsetenv("QL_LOG_FILE"); }

    TestFolder folder_;
};

/// Records what it is handed; refuses from call `failingCall` on.
class RecordingOutput : public HostOutput {
  public:
    explicit RecordingOutput(std::size_t failingCall) : failingCall_(failingCall) {}
    int32_t Reserved() override { return 0; }
    int32_t Write(const void* data, int32_t count, int64_t value) override {
        if (counts.size() >= failingCall_) return count - 1;
        counts.push_back(count);
        values.push_back(value);
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(count));
        return count;
    }
    std::vector<int32_t> counts;
    std::vector<int64_t> values;
    std::string bytes;

  private:
    std::size_t failingCall_;
};

class StreamingWriter : public RTL {
  public:
    explicit StreamingWriter(HostOutput* output) {
        status_.OutputValue = 0x123456789AB;
        context_.Status = &status_;
        job_ = &context_;
        output_ = output;
    }

  private:
    JobContext context_;
    JobStatusRecord status_ = {};
};

struct Write {
    int32_t count;
    int32_t flush;
};

TEST_F(WriterTest, StreamsToTheHostInBuffersOfOneMebibyte) {
    struct Case {
        std::vector<Write> writes;
        std::vector<int32_t> handedOver;
    };
    const Case cases[] = {
        {{{100, 0}, {50, 0}}, {}},
        {{{100, 0}, {0, 1}}, {100}},
        {{{100, 0}, {7, 1}}, {100, 7}},
        {{{7, 1}}, {7}},
        {{{1048544, 0}, {0, 1}}, {1048544}},
        {{{1048544, 0}, {1, 0}, {0, 1}}, {1048544, 1}},
        {{{1048543, 0}, {1, 0}, {0, 1}}, {1048544}},
        {{{10, 0}, {1048545, 0}, {5, 0}, {0, 1}}, {10, 1048545, 5}},
        {{{0, 0}, {-3, 0}, {-3, 1}}, {}},
    };
    std::string data;
    for (int i = 0; i < 2000000; ++i)
        data += static_cast<char>(i * 31 / 7);
    for (const Case& c : cases) {
        RecordingOutput output(1000);
        StreamingWriter writer(&output);
        std::string expected;
        for (const Write& write : c.writes) {
            EXPECT_EQ(writer.WriteNdata(data.data(), write.count, write.flush), write.count);
            expected += data.substr(0, static_cast<std::size_t>(std::max(write.count, 0)));
        }
        EXPECT_EQ(output.counts, c.handedOver);
        writer.WriteNdata(nullptr, 0, 1);
        EXPECT_TRUE(output.bytes == expected);
        for (const int64_t value : output.values)
            EXPECT_EQ(value, 0x123456789AB);
    }
}

TEST_F(WriterTest, StreamFaultsAreLoggedAndRaised) {
    struct Case {
        std::vector<Write> writes;  // the last one fails
        std::size_t failingCall;
        const char* log;
    };
    const Case cases[] = {
        {{{5, 0}, {0, 1}}, 0, "(85): ABaseRTL::WriteNdata\n"},
        {{{5, 1}}, 0, "(99): ABaseRTL::WriteNdata num=5\n"},
        {{{5, 0}, {1048544, 0}}, 0, "(114): ABaseRTL::WriteNdata\n"},
        {{{1048545, 0}}, 0, "(126): ABaseRTL::WriteNdata\n"},
        {{{5, 0}, {6, 1}}, 1, "(99): ABaseRTL::WriteNdata num=6\n"},
    };
    const std::string data(1100000, 'x');
    for (const Case& c : cases) {
        fs::remove(folder_.Name("log"));
        RecordingOutput output(c.failingCall);
        StreamingWriter writer(&output);
        int raised = -1;
        for (const Write& write : c.writes) {
            try {
                writer.WriteNdata(data.data(), write.count, write.flush);
            } catch (int fault) {
                raised = fault;
            }
        }
        EXPECT_EQ(raised, 0);
        EXPECT_EQ(folder_.Read("log"),
                  std::string("E PrinterDriver\\Common\\Xsrc\\ABaseRTL") + c.log);
    }
}

TEST(RepackRow, RepeatsPixelsOfEveryDepth) {
    struct Case {
        int32_t bits;
        int64_t bitCount;
        std::vector<uint8_t> source;
        int32_t repeat;
        std::vector<uint8_t> expected;
    };
    const Case cases[] = {
        {1, 8, {0xA5}, 1, {0xA5}},
        {1, 8, {0xA5}, 2, {0xCC, 0x33}},
        {1, 8, {0x81}, 3, {0xE0, 0x00, 0x07}},
        {2, 8, {0x1B}, 2, {0x05, 0xAF}},
        {4, 8, {0x1F}, 3, {0x11, 0x1F, 0xFF}},
        {8, 16, {0x12, 0x34}, 2, {0x12, 0x12, 0x34, 0x34}},
        // Five pixels: the spare bits of the byte are repeated along behind them.
        {1, 5, {0xFF}, 2, {0xFF, 0xFF}},
    };
    for (const Case& c : cases) {
        std::vector<uint8_t> destination(c.expected.size(), 0x00);
        int64_t position = 0;
        RepackRow(c.bits, c.bitCount, c.source, c.repeat, position, destination);
        EXPECT_EQ(destination, c.expected) << c.bits << " bits, repeat " << c.repeat;
        EXPECT_EQ(position, c.bitCount * c.repeat);
    }
}

TEST_F(WriterTest, FileClassAnswersAsTabled) {
    const std::string path = folder_.Name("a\\b.bin");  // '\' counts as '/' where it is opened
    fs::create_directory(folder_.Name("a"));
    AFM_File file;
    char text[512] = "kept";
    EXPECT_EQ(file.GetPath(text) + file.Read(text, 1, 0, 0) + file.Close(), 0);
    EXPECT_STREQ(text, "kept");

    ASSERT_EQ(file.Open(path.c_str(), 0), 1);
    EXPECT_TRUE(fs::exists(folder_.Name("a/b.bin")));
    EXPECT_EQ(file.Read(text, 10, 0, 0), 0);
    EXPECT_EQ(file.Write("x", 1, 0, 0), 0);

    ASSERT_EQ(file.Open(path.c_str(), 2), 1);
    EXPECT_EQ(file.Write("0123456789", 10, 0, 0), 10);
    EXPECT_EQ(file.Seek(3, 0), 1);
    EXPECT_EQ(file.Seek(0, 3) + file.Seek(-1, 0), 0);
    EXPECT_EQ(file.Tell(), 3);
    EXPECT_EQ(file.Read(text, 2, 0, 1), 2);
    EXPECT_EQ(std::string(text, 2), "34");
    EXPECT_EQ(file.Read(text, 9, -2, 2), 2);
    EXPECT_EQ(file.Seek((int64_t{1} << 32) - 1, 0), 1);  // a low half of all ones is no failure
    EXPECT_EQ(file.Tell(), (int64_t{1} << 32) - 1);
    EXPECT_EQ(file.Seek(4, 0), 1);
    EXPECT_NE(file.SetEnd(), 0);
    EXPECT_EQ(folder_.Read("a/b.bin"), "0123");
    EXPECT_EQ(file.GetFileName(text), 1);
    EXPECT_STREQ(text, "b.bin");
    EXPECT_EQ(file.GetDirectory(text), 1);
    EXPECT_EQ(text, folder_.Name("a"));
    EXPECT_NE(file.Delete(), 0);
    EXPECT_FALSE(fs::exists(folder_.Name("a/b.bin")));
    EXPECT_EQ(file.GetHandle(), INVALID_HANDLE_VALUE);

    EXPECT_EQ(file.Open(folder_.Name("plain").c_str(), 7), 1);  // no access rights
    EXPECT_EQ(file.Read(text, 1, 0, 1), 0);
    EXPECT_EQ(file.GetDirectory(text), 1);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(file.Open(std::string(512, 'p').c_str(), 1), 0);
    EXPECT_EQ(file.Open(folder_.Name("").c_str(), 0), 0);

    setenv("QL_CODE_PAGE", "CP932", 1);  // no separator here
    EXPECT_EQ(file.Open(folder_.Name("\x95\\x").c_str(), 1), 1);
    EXPECT_EQ(file.GetFileName(text), 1);
    EXPECT_EQ(text, folder_.Name("\x95\\x"));
    unsetenv("QL_CODE_PAGE");
}

}  // namespace
