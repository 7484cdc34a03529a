#include <gtest/gtest.h>
#include <tiffio.h>

#include <functional>
#include <string>
#include <vector>

#include "PlateMaker.h"
#include "TestFolder.h"
#include "host/ZEJob.h"

namespace {

enum class Row { kGood, kFailed, kWrong };

Row ReadAndCompare(AImage& image, const Plate& plate, std::size_t position, uint32_t separation,
                   uint32_t row) {
    const std::vector<uint8_t> expected = PlateRow(plate, position, row);
    std::vector<uint8_t> bytes(expected.size());
    if (image.ReadRow(separation, static_cast<int32_t>(row), 1, bytes.data(), 0) == 0) {
        return Row::kFailed;
    }
    return bytes == expected ? Row::kGood : Row::kWrong;
}

/// What became of a page: "none" without an image, "damaged" when a row fails, "good" when every
/// row is as it was made, "wrong" when one is not.
std::string PageState(ZEJob& job, const std::vector<Plate>& plates, int page) {
    AImage* const image = job.GetImage(static_cast<uint32_t>(page));
    if (image == nullptr) return "none";
    AObList<AColorant> separations;
    image->GetSeparations(separations);
    uint32_t separation = 0;
    std::string state = "good";
    for (std::size_t i = 0; i < plates.size(); ++i) {
        if (plates[i].page != page) continue;
        if (separation == separations.size()) return "wrong";
        if (separations[separation]->Depth != plates[i].bits ||
            image->Width() != static_cast<int32_t>(plates[i].width) ||
            image->Rows() != static_cast<int32_t>(plates[i].rows)) {
            return "wrong";
        }
        for (uint32_t row = 0; row < plates[i].rows; ++row) {
            const Row found = ReadAndCompare(*image, plates[i], i, separation, row);
            if (found == Row::kWrong) return "wrong";
            if (found == Row::kFailed) state = "damaged";
        }
        ++separation;
    }
    return separation == separations.size() ? state : "wrong";
}

std::string PageStates(const AFilePath& path, const std::vector<Plate>& plates) {
    ZEJob job(0);
    job.Load(path);
    job.OpenData(1);
    std::string states = std::to_string(job.PageCount) + ":";
    for (int page = 0; page < job.PageCount; ++page) {
        states += ' ';
        states += PageState(job, plates, page);
    }
    return states;
}

/// Two separations on each of three pages.
std::vector<Plate> ThreePages(uint16_t compression, uint16_t bits) {
    std::vector<Plate> plates;
    for (int page = 0; page < 3; ++page) {
        for (const char* name : {"Cyan", "Black"}) {
            Plate plate;
            plate.page = page;
            plate.pages = 3;
            plate.name = name;
            plate.compression = compression;
            plate.bits = bits;
            plates.push_back(plate);
        }
    }
    return plates;
}

struct Encoding {
    const char* name;
    uint16_t compression;
    uint16_t bits;
};

constexpr Encoding kEncodings[] = {
    {"none 1", COMPRESSION_NONE, 1},
    {"none 2", COMPRESSION_NONE, 2},
    {"none 4", COMPRESSION_NONE, 4},
    {"none 8", COMPRESSION_NONE, 8},
    {"packbits 1", COMPRESSION_PACKBITS, 1},
    {"packbits 8", COMPRESSION_PACKBITS, 8},
    {"lzw 1", COMPRESSION_LZW, 1},
    {"lzw 8", COMPRESSION_LZW, 8},
    {"deflate 1", COMPRESSION_ADOBE_DEFLATE, 1},
    {"deflate 8", COMPRESSION_ADOBE_DEFLATE, 8},
    {"fax 3", COMPRESSION_CCITTFAX3, 1},
    {"fax 4", COMPRESSION_CCITTFAX4, 1},
};

TEST(Container, DeliversEveryEncodingInEveryForm) {
    const TestFolder folder;
    for (const Encoding& encoding : kEncodings) {
        for (const char* mode : {"wl4", "wb4", "wl8", "wb8"}) {
            for (const int fillOrder : {FILLORDER_MSB2LSB, FILLORDER_LSB2MSB}) {
                for (const uint32_t rowsPerStrip : {1U, 4U, 9U, 0xFFFFFFFFU}) {
                    std::vector<Plate> plates = ThreePages(encoding.compression, encoding.bits);
                    for (Plate& plate : plates) {
                        plate.width = 37;
                        plate.fillOrder = static_cast<uint16_t>(fillOrder);
                        plate.rowsPerStrip = rowsPerStrip;
                    }
                    MakeContainer(folder.Name("c.tif"), mode, plates);
                    EXPECT_EQ(PageStates(folder.Path("c.tif"), plates), "3: good good good")
                        << encoding.name << " " << mode << " fill order " << fillOrder
                        << " rows per strip " << rowsPerStrip;
                }
            }
        }
    }
}

TEST(Container, DeliversRowsInAnyOrder) {
    const TestFolder folder;
    for (const int compression :
         {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_ADOBE_DEFLATE}) {
        // Large enough for several blocks, and for a strip that is decoded row by row.
        std::vector<Plate> plates(2);
        for (Plate& plate : plates) {
            plate.width = 2000;
            plate.rows = 2300;
            plate.bits = 8;
            plate.rowsPerStrip = 2300;
            plate.compression = static_cast<uint16_t>(compression);
        }
        plates[1].rowsPerStrip = 7;
        MakeContainer(folder.Name("c.tif"), "w", plates);
        ZEJob job(0);
        ASSERT_EQ(job.Load(folder.Path("c.tif")), 1);
        ASSERT_EQ(job.OpenData(1), 1);
        AImage* const image = job.GetImage(0);
        ASSERT_NE(image, nullptr);
        for (uint32_t row = 0; row < 2300; ++row) {
            ASSERT_EQ(ReadAndCompare(*image, plates[0], 0, 0, row), Row::kGood) << row;
            ASSERT_EQ(ReadAndCompare(*image, plates[1], 1, 1, row), Row::kGood) << row;
        }
        for (const uint32_t row : {5U, 2299U, 0U, 1400U, 1399U, 1401U, 2298U}) {
            EXPECT_EQ(ReadAndCompare(*image, plates[0], 0, 0, row), Row::kGood) << row;
            EXPECT_EQ(ReadAndCompare(*image, plates[1], 1, 1, row), Row::kGood) << row;
        }
        uint8_t buffer[2000];
        EXPECT_EQ(image->ReadRow(0, -1, 1, buffer, 0), 0);
        EXPECT_EQ(image->ReadRow(0, 2300, 1, buffer, 0), 0);
        EXPECT_EQ(image->ReadRow(2, 0, 1, buffer, 0), 0);
    }
}

TEST(Container, NamesSeparationsAndDepths) {
    const TestFolder folder;
    std::vector<Plate> plates(3);
    plates[0].display = "Process Cyan";
    plates[1].name = "Spot 1";
    plates[1].bits = 8;
    plates[2].name = "";
    plates[2].bits = 4;
    MakeContainer(folder.Name("c.tif"), "w", plates);
    ZEJob job(0);
    job.Load(folder.Path("c.tif"));
    EXPECT_EQ(job.GetImage(0), nullptr) << "before the page data is open";
    job.OpenData(1);
    AImage* const image = job.GetImage(0);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->Width(), 40);
    EXPECT_EQ(image->Rows(), 9);
    AObList<AColorant> separations;
    image->GetSeparations(separations);
    ASSERT_EQ(separations.size(), 3U);
    EXPECT_EQ(separations[0]->InternalName, "Cyan");
    EXPECT_EQ(separations[0]->DisplayName, "Process Cyan");
    EXPECT_EQ(separations[0]->Depth, 1);
    EXPECT_EQ(separations[1]->DisplayName, "Spot 1");
    EXPECT_EQ(separations[1]->Depth, 8);
    EXPECT_EQ(separations[2]->InternalName, "");
    EXPECT_EQ(separations[2]->DisplayName, "");
    EXPECT_EQ(job.GetImage(1), nullptr);
}

TEST(Container, SaysNothingOnStandardError) {
    const TestFolder folder;
    const std::vector<Plate> plates = ThreePages(COMPRESSION_CCITTFAX4, 1);
    MakeContainer(folder.Name("c.tif"), "w", plates);
    std::string bytes = folder.Read("c.tif");
    for (std::size_t i = 8; i < 24; ++i)
        bytes[i] = '\x5A';  // the first strip's data
    testing::internal::CaptureStderr();
    PageStates(folder.Write("broken.tif", bytes), plates);
    PageStates(folder.Write("text.tif", "no container at all"), plates);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Container, CutAnywhereNeverDeliversAWrongRow) {
    const TestFolder folder;
    for (const Encoding& encoding : kEncodings) {
        for (const char* mode : {"wl4", "wb8"}) {
            const std::vector<Plate> plates = ThreePages(encoding.compression, encoding.bits);
            MakeContainer(folder.Name("c.tif"), mode, plates);
            const std::string whole = folder.Read("c.tif");
            for (std::size_t size = 0; size < whole.size(); size += 13) {
                const std::string states =
                    PageStates(folder.Write("cut.tif", whole.substr(0, size)), plates);
                EXPECT_EQ(states.find("wrong"), std::string::npos)
                    << encoding.name << " cut to " << size << ": " << states;
                EXPECT_NE(states, "3: good good good") << encoding.name << " cut to " << size;
            }
        }
    }
}

TEST(Container, AnyByteMayBeDamaged) {
    const TestFolder folder;
    for (const Encoding& encoding : {kEncodings[0], kEncodings[6], kEncodings[11]}) {
        std::vector<Plate> plates = ThreePages(encoding.compression, encoding.bits);
        plates.resize(3);
        MakeContainer(folder.Name("c.tif"), "w", plates);
        const std::string whole = folder.Read("c.tif");
        for (std::size_t i = 0; i < whole.size(); ++i) {
            for (const char value : {'\0', '\xFF'}) {
                std::string bytes = whole;
                bytes[i] = value;
                // Damage inside the pixels themselves cannot be seen; only that nothing breaks.
                EXPECT_NE(PageStates(folder.Write("damaged.tif", bytes), plates), "");
            }
        }
    }
}

using Change = std::function<void(std::string& bytes, const std::vector<DirectoryPlace>& places)>;

struct Damage {
    const char* what;
    Change change;
    const char* states;
};

Change Link(std::size_t from,
            const std::function<std::size_t(const std::vector<DirectoryPlace>&)>& to) {
    return [from, to](std::string& bytes, const std::vector<DirectoryPlace>& places) {
        PutNumber(bytes, places[from].link, 4, static_cast<uint32_t>(to(places)));
    };
}

Change LinkTo(std::size_t from, std::size_t offset) {
    return Link(from, [offset](const auto&) { return offset; });
}

/// Overwrites a field of directory `index`'s entry for `tag`: 0 the tag, 2 the type, 4 the count,
/// 8 the value.
Change Entry(std::size_t index, uint32_t tag, std::size_t field, int size, uint32_t value) {
    return [=](std::string& bytes, const std::vector<DirectoryPlace>& places) {
        PutNumber(bytes, FindEntry(bytes, places[index].offset, tag) + field, size, value);
    };
}

TEST(Container, DamageTakesThePagesItBelongsTo) {
    // Directories 0 and 1 are page 0, 2 and 3 page 1, 4 and 5 page 2.
    const std::vector<Damage> kDamages = {
        {"chain ends early", LinkTo(3, 0), "3: good good none"},
        {"chain ends inside a page", LinkTo(2, 0), "3: good wrong none"},
        {"link outside the file", LinkTo(3, 0x7FFFFFFF), "3: good none none"},
        {"link into the header", LinkTo(3, 4), "3: good none none"},
        {"link of the last directory", LinkTo(5, 0x7FFFFFFF), "3: good good none"},
        {"link to itself", Link(3, [](const auto& at) { return at[3].offset; }),
         "3: good none none"},
        {"link to the first", Link(5, [](const auto& at) { return at[0].offset; }),
         "3: good good none"},
        {"link past a page", Link(1, [](const auto& at) { return at[4].offset; }),
         "3: good none none"},
        {"link back", Link(3, [](const auto& at) { return at[1].offset; }), "3: good none none"},
        {"another page's number", Entry(3, TIFFTAG_PAGENUMBER, 8, 2, 2), "3: good wrong wrong"},
        {"an earlier page's number", Entry(4, TIFFTAG_PAGENUMBER, 8, 2, 0), "3: none good none"},
        {"a number beyond the count", Entry(4, TIFFTAG_PAGENUMBER, 8, 2, 9), "3: good good wrong"},
        {"no page number", Entry(2, TIFFTAG_PAGENUMBER, 0, 2, 299), "3: none none good"},
        {"page count of one", Entry(0, TIFFTAG_PAGENUMBER, 10, 2, 1), "1: good"},
        {"page count of 0", Entry(0, TIFFTAG_PAGENUMBER, 10, 2, 0), "3: good good good"},
        {"page count beyond", Entry(0, TIFFTAG_PAGENUMBER, 10, 2, 5),
         "5: good good good none none"},
        {"no width", Entry(2, TIFFTAG_IMAGEWIDTH, 0, 2, 255), "3: good none good"},
        {"width 0", Entry(2, TIFFTAG_IMAGEWIDTH, 8, 4, 0), "3: good none good"},
        {"another width", Entry(2, TIFFTAG_IMAGEWIDTH, 8, 2, 41), "3: good none good"},
        {"absurd width", Entry(2, TIFFTAG_IMAGEWIDTH, 2, 10, 4), "3: good none good"},
        {"another length", Entry(2, TIFFTAG_IMAGELENGTH, 8, 2, 8), "3: good none good"},
        {"photometric", Entry(2, TIFFTAG_PHOTOMETRIC, 8, 2, 1), "3: good none good"},
        {"depth 3", Entry(2, TIFFTAG_BITSPERSAMPLE, 8, 2, 3), "3: good none good"},
        {"depth 16", Entry(2, TIFFTAG_BITSPERSAMPLE, 8, 2, 16), "3: good none good"},
        {"unknown compression", Entry(2, TIFFTAG_COMPRESSION, 8, 2, 999), "3: good none good"},
        {"too few strips", Entry(2, TIFFTAG_ROWSPERSTRIP, 8, 2, 1), "3: good damaged good"},
        {"strips of no rows", Entry(2, TIFFTAG_ROWSPERSTRIP, 8, 2, 0), "3: good none good"},
        {"no strip offsets", Entry(2, TIFFTAG_STRIPOFFSETS, 0, 2, 272), "3: good none good"},
        {"no strip sizes", Entry(2, TIFFTAG_STRIPBYTECOUNTS, 0, 2, 280), "3: good none good"},
        {"name outside the file", Entry(2, TIFFTAG_PAGENAME, 8, 4, 0x7FFFFFF0),
         "3: good none good"},
        {"strip offsets elsewhere", Entry(2, TIFFTAG_STRIPOFFSETS, 8, 4, 0x7FFFFFF0),
         "3: good none good"},
    };
    const TestFolder folder;
    const std::vector<Plate> plates = ThreePages(COMPRESSION_NONE, 1);
    MakeContainer(folder.Name("c.tif"), "wl4", plates);
    const std::string whole = folder.Read("c.tif");
    const std::vector<DirectoryPlace> places = FindDirectories(whole);
    ASSERT_EQ(places.size(), 6U);
    for (const Damage& damage : kDamages) {
        std::string bytes = whole;
        damage.change(bytes, places);
        EXPECT_EQ(PageStates(folder.Write("damaged.tif", bytes), plates), damage.states)
            << damage.what;
    }
}

TEST(Container, RefusesWhatIsNoSeparation) {
    const TestFolder folder;
    const auto states = [&folder](const std::function<void(Plate&)>& change) {
        Plate plate;
        change(plate);
        MakeContainer(folder.Name("c.tif"), "w", {plate});
        return PageStates(folder.Path("c.tif"), {plate});
    };
    EXPECT_EQ(states([](Plate& plate) { plate.photometric = PHOTOMETRIC_MINISBLACK; }), "1: none");
    EXPECT_EQ(states([](Plate& plate) { plate.bits = 16; }), "1: none");
    EXPECT_EQ(states([](Plate& plate) { plate.samples = 3; }), "1: none");
    EXPECT_EQ(states([](Plate& plate) { plate.tiles = true; }), "1: none");
    EXPECT_EQ(states([](Plate& plate) { plate.pages = -1; }), "1: good");
}

TEST(Container, BlankCompressedRowsMayBeLargerThanTheFile) {
    const TestFolder folder;
    TIFF* const tiff = TIFFOpen(folder.Name("c.tif").c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 60000);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 3);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    std::vector<uint8_t> row(60000);
    for (uint32_t i = 0; i < 3; ++i)
        TIFFWriteScanline(tiff, row.data(), i, 0);
    TIFFClose(tiff);
    ZEJob job(0);
    job.Load(folder.Path("c.tif"));
    job.OpenData(1);
    AImage* const image = job.GetImage(0);
    ASSERT_NE(image, nullptr);
    row[0] = 1;
    EXPECT_EQ(image->ReadRow(0, 2, 1, row.data(), 0), 1);
    EXPECT_EQ(row, std::vector<uint8_t>(60000));
}

TEST(Container, FaxDataThatEndsEarlyIsNoBlankPaper) {
    // Three blank rows ("1" each), then the end-of-block mark (two end-of-line codes).
    const uint8_t kThreeRows[] = {0xE0, 0x01, 0x00, 0x10};
    const TestFolder folder;
    for (const uint32_t rows : {3U, 8U, 60000U}) {
        TIFF* const tiff = TIFFOpen(folder.Name("c.tif").c_str(), "w");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 1600);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        uint8_t data[sizeof kThreeRows];
        std::copy(std::begin(kThreeRows), std::end(kThreeRows), data);
        TIFFWriteRawStrip(tiff, 0, data, sizeof data);
        TIFFClose(tiff);
        ZEJob job(0);
        job.Load(folder.Path("c.tif"));
        job.OpenData(1);
        AImage* const image = job.GetImage(0);
        ASSERT_NE(image, nullptr);
        uint8_t row[200];
        const auto last = static_cast<int32_t>(rows) - 1;
        EXPECT_EQ(image->ReadRow(0, last, 1, row, 0), rows == 3 ? 1 : 0) << rows;
    }
}

TEST(Container, KnowsItsFiles) {
    const TestFolder folder;
    EXPECT_EQ(ZEJob::GetFileName(kPreferredContainer, AFilePath("/a/b.job")).fullPath(),
              AFilePath("/a/b.job.pages.tif").fullPath());
    EXPECT_EQ(ZEJob::GetFileName(kFallbackContainer, AFilePath("/a/b.job")).fullPath(),
              AFilePath("/a/b.job.tif").fullPath());
    using namespace std::string_view_literals;
    for (const std::string_view bytes :
         {""sv, "II"sv, "MM\0*"sv, "II*\0\0\0\0\0"sv, "II*\0\xFF\xFF\xFF\x7F"sv,
          "II+\0\x8\0\0\0\x10\0\0\0\0\0\0\0"sv}) {
        ZEJob job(0);
        job.Load(folder.Write("c.tif", bytes));
        job.OpenData(1);
        EXPECT_EQ(job.PageCount, 0);
        EXPECT_EQ(job.GetImage(0), nullptr);
    }
    ZEJob missing(0);
    EXPECT_EQ(missing.Load(folder.Path("missing.tif")), 0);
    EXPECT_EQ(missing.Load(folder.Path(".")), 0) << "a folder";
    EXPECT_EQ(missing.OpenData(1), 0);
    missing.Flush();
}

TEST(Container, SeveralJobsReadAtOnce) {
    const TestFolder folder;
    const std::vector<Plate> plates = ThreePages(COMPRESSION_LZW, 8);
    MakeContainer(folder.Name("c.tif"), "w", plates);
    ZEJob first(0);
    ZEJob second(0);
    for (ZEJob* job : {&first, &second}) {
        job->Load(folder.Path("c.tif"));
        job->OpenData(1);
    }
    AImage* const one = first.GetImage(0);
    AImage* const other = second.GetImage(2);
    for (uint32_t row = 0; row < 9; ++row) {
        EXPECT_EQ(ReadAndCompare(*one, plates[1], 1, 1, row), Row::kGood);
        EXPECT_EQ(ReadAndCompare(*other, plates[4], 4, 0, row), Row::kGood);
    }
    first.Flush();
    EXPECT_EQ(ReadAndCompare(*other, plates[5], 5, 1, 0), Row::kGood);
    EXPECT_EQ(PageState(first, plates, 1), "good");
}

}  // namespace
