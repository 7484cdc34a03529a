// Every read and every allocation that opening and reading a container takes fails once, and then
// from some call on: a row is right or fails, a page is whole or has no image.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "ContainerStates.h"
#include "FailingCalls.h"
#include "TestFolder.h"

namespace {

enum Outcome { kRight, kFailed, kWrong };

bool IsRow(const uint8_t* read, const Page& page, const Separation& made, uint32_t row) {
    const std::size_t bytes = RowBytes(page.Width, made.Depth);
    const char* const expected = made.Rows.data() + row * bytes;
    const std::size_t spareBits = bytes * 8 - std::size_t{page.Width} * unsigned(made.Depth);
    const int lastBits = (read[bytes - 1] ^ expected[bytes - 1]) & 0xFF;
    return std::memcmp(read, expected, bytes - 1) == 0 && lastBits >> spareBits == 0;
}

/// Reads on behind what fails, and allocates nothing of its own but the list of separations.
Outcome ReadPage(ZEJob& job, uint32_t number, const Page& page, ContainerFailure& failure) {
    AImage* const image = job.GetImage(number);
    if (image == nullptr) failure = job.Failure();
    if (image == nullptr) return kFailed;
    AObList<AColorant> found;
    image->GetSeparations(found);
    if (found.size() != page.Separations.size()) return kWrong;
    Outcome outcome = kRight;
    for (uint32_t s = 0; s < found.size(); ++s) {
        const Separation& made = page.Separations[s];
        if (found[s]->InternalName != made.Name || found[s]->DisplayName != made.DisplayName)
            return kWrong;
        for (uint32_t row = 0; row < page.Height; ++row) {
            const uint8_t* const read = image->Row(s, static_cast<int32_t>(row));
            if (read != nullptr && !IsRow(read, page, made, row)) return kWrong;
            if (read != nullptr) continue;
            if (outcome == kRight) failure = image->Failure();
            outcome = kFailed;
        }
    }
    return outcome;
}

Outcome ReadPages(const AFilePath& path, const std::vector<Page>& pages,
                  ContainerFailure& failure) try {
    ZEJob job(0);
    job.Load(path);
    failure = job.Failure();
    job.OpenData(1);
    if (job.PageCount == 0) return kFailed;
    for (uint32_t number = 0; number < pages.size(); ++number) {
        const Outcome outcome = ReadPage(job, number, pages[number], failure);
        if (outcome != kRight) return outcome;
    }
    return job.PageCount == static_cast<int32_t>(pages.size()) ? kRight : kWrong;
} catch (const std::bad_alloc&) {
    return kFailed;
}

struct Kind {
    const char* name;
    const char* mode;
    int compression;
    uint32_t rowsPerStrip;
    bool saysCount;  // of pages
};

// Strip tables of up to four strips are read at once, longer ones in parts.
constexpr Kind kKinds[] = {
    {"plain", "wl4", COMPRESSION_NONE, 9, true},
    {"plain strips", "wl8", COMPRESSION_NONE, 1, false},
    {"packed", "wb4", COMPRESSION_PACKBITS, 4, true},
    {"packed strips", "wl4", COMPRESSION_PACKBITS, 2, true},
    {"LZW strips", "wl4", COMPRESSION_LZW, 2, true},
    {"deflate", "wl8", COMPRESSION_ADOBE_DEFLATE, 9, true},
    {"fax", "wl4", COMPRESSION_CCITTFAX3, 4, true},
};

/// Pages of two separations; a private tag, and what the compression can be told.
std::vector<Page> MakeContainer(const TestFolder& folder, const Kind& kind, uint32_t pageCount) {
    std::vector<Page> pages;
    const int depth = kind.compression == COMPRESSION_CCITTFAX3 ? 1 : 8;
    for (uint32_t seed = 0; seed < pageCount; ++seed)
        pages.push_back(
            RandomPage(37, 9, {{"Cyan", depth, "Process Cyan"}, {"Spot 1", depth, "S"}}, seed));
    WriteContainer(
        folder.Name("c.tif"), pages,
        [&](TIFF* tiff, std::size_t page, std::size_t separation) {
            static const TIFFFieldInfo kPrivate = {65000,
                                                   TIFF_VARIABLE,
                                                   TIFF_VARIABLE,
                                                   TIFF_ASCII,
                                                   FIELD_CUSTOM,
                                                   1,
                                                   0,
                                                   const_cast<char*>("Private")};
            Encoded(kind.compression, FILLORDER_MSB2LSB, kind.rowsPerStrip)(tiff, page, separation);
            TIFFMergeFieldInfo(tiff, &kPrivate, 1);
            TIFFSetField(tiff, 65000, "nobody's business");
            TIFFSetField(tiff, TIFFTAG_PAGENUMBER, static_cast<int>(page),
                         kind.saysCount ? static_cast<int>(pageCount) : 0);
            const bool predicts = kind.compression == COMPRESSION_LZW ||
                                  kind.compression == COMPRESSION_ADOBE_DEFLATE;
            if (predicts) TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
            if (kind.compression == COMPRESSION_CCITTFAX3)
                TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
        },
        kind.mode);
    return pages;
}

TEST(ContainerSweep, ReadsThatFail) {
    const TestFolder folder;
    const AFilePath path = folder.Path("c.tif");
    for (const Kind& kind : kKinds) {
        const std::vector<Page> pages = MakeContainer(folder, kind, 2);
        for (const bool fromThenOn : {false, true}) {
            bool hasFailed = true;
            for (int64_t nth = 1; hasFailed; ++nth) {
                ContainerFailure failure;
                const FailingCall fault(Call::kRead, nth, fromThenOn);
                const Outcome outcome = ReadPages(path, pages, failure);
                hasFailed = fault.HasFailed();
                EXPECT_NE(outcome, kWrong) << kind.name << " " << nth << " " << fromThenOn;
                if (hasFailed && fromThenOn) {
                    EXPECT_EQ(outcome, kFailed) << kind.name << " " << nth;
                }
                EXPECT_EQ(failure.systemError, outcome == kFailed ? EIO : 0)
                    << kind.name << " " << nth << " " << fromThenOn << " " << failure.text;
            }
        }
    }
}

// Without C++ memory nothing is lost either (the sanitizers look for leaks).
TEST(ContainerSweep, MemoryThatIsMissing) {
    const TestFolder folder;
    const AFilePath path = folder.Path("c.tif");
    for (const Kind& kind : kKinds) {
        const std::vector<Page> pages = MakeContainer(folder, kind, 2);
        bool hasFailed = true;
        for (int64_t nth = 1; hasFailed; ++nth) {
            ContainerFailure failure;
            const FailingCall fault(Call::kNew, nth, false);
            const Outcome outcome = ReadPages(path, pages, failure);
            hasFailed = fault.HasFailed();
            EXPECT_EQ(outcome, hasFailed ? kFailed : kRight) << kind.name << " " << nth;
        }
    }
}

}  // namespace
