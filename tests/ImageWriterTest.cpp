// Preview pictures that the disk or the memory does not take: whole, or removed and said so.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>

#include "FailingCalls.h"
#include "TestFolder.h"
#include "boundary/FileSizeLimit.h"
#include "boundary/OpenFiles.h"
#include "preview/BMP_Writer.h"
#include "preview/PNG_Writer.h"

namespace {

constexpr int kWidth = 60;
constexpr int kHeight = 50;

template <class Writer>
std::unique_ptr<Image_Writer> Make() {
    return std::make_unique<Writer>();
}
constexpr std::unique_ptr<Image_Writer> (*kWriters[])() = {Make<Image_Writer>, Make<BMP_Writer>,
                                                           Make<PNG_Writer>};

/// A picture that no compression makes smaller.
ImageFailure Save(Image_Writer& writer, const std::string& path) {
    writer.Create(path, kWidth, kHeight);
    uint32_t noise = 1;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            noise = noise * 1664525 + 1013904223;
            writer.SetPixel(x, y, static_cast<unsigned char>(noise >> 24),
                            static_cast<unsigned char>(noise >> 16),
                            static_cast<unsigned char>(noise >> 20));
        }
    }
    writer.Save();
    return writer.Failure();
}

class ImageWriters : public testing::Test {
  protected:
    void SetUp() override { setenv("QL_MESSAGE_FILE", "/dev/null", 1); }
    void TearDown() override { unsetenv("QL_MESSAGE_FILE"); }

    TestFolder folder;
    std::string path = folder.Name("picture");
};

TEST_F(ImageWriters, FullDisks) {
    for (const auto make : kWriters) {
        EXPECT_EQ(Save(*make(), path).text, nullptr);
        const std::string whole = folder.Read("picture");
        ASSERT_GT(whole.size(), 8192U) << "no more than a stream holds back";
        for (std::size_t most = 0; most < whole.size(); most += most < 50 ? 7 : 811) {
            const FileSizeLimit limit(most);
            const ImageFailure failure = Save(*make(), path);
            EXPECT_STREQ(failure.text, "the preview cannot be written");
            EXPECT_TRUE(failure.isWriteFailure);
            EXPECT_EQ(failure.systemError, EFBIG) << most;
            EXPECT_FALSE(std::filesystem::exists(path)) << most;
        }
        const FileSizeLimit limit(whole.size());
        EXPECT_EQ(Save(*make(), path).text, nullptr);
        EXPECT_EQ(folder.Read("picture"), whole);
    }
}

TEST_F(ImageWriters, FilesThatCannotBeMadeOrRemoved) {
    for (const auto make : kWriters) {
        const ImageFailure none = Save(*make(), folder.Name("none/picture"));
        EXPECT_STREQ(none.text, "the preview cannot be created");
        EXPECT_EQ(none.systemError, ENOENT);
        EXPECT_FALSE(none.isWriteFailure);
        const FileSizeLimit limit(100);
        const FailingCall fault(Call::kRemove, 1, true);
        const ImageFailure left = Save(*make(), path);
        EXPECT_NE(std::string(left.text).find("cannot be removed"), std::string::npos);
        EXPECT_EQ(left.systemError, EFBIG);
        EXPECT_TRUE(left.isWriteFailure);
    }
}

// Nothing stays open or allocated (the sanitizers look for that).
TEST_F(ImageWriters, MemoryThatIsMissing) {
    for (const auto make : kWriters) {
        Save(*make(), path);
        const std::string whole = folder.Read("picture");
        const std::vector<std::string> open = OpenFiles();
        bool hasFailed = true;
        for (int64_t nth = 1; hasFailed; ++nth) {
            bool isDone = false;
            try {
                const FailingCall fault(Call::kAllocate, nth, false);
                isDone = Save(*make(), path).text == nullptr;
                hasFailed = fault.HasFailed();
            } catch (const std::bad_alloc&) {
                // The page goes on without its preview.
            }
            EXPECT_TRUE(!isDone || folder.Read("picture") == whole) << nth;
            EXPECT_EQ(OpenFiles(), open) << nth;
        }
    }
}

}  // namespace
