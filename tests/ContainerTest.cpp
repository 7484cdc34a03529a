#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ContainerStates.h"
#include "TestFolder.h"
#include "boundary/ContainerMaker.h"
#include "host/ZEJob.h"

namespace {

struct Encoding {
    int compression;
    int bits[2];  // of the two separations of each page
};

constexpr Encoding kEncodings[] = {
    {COMPRESSION_NONE, {1, 8}},          {COMPRESSION_NONE, {4, 2}},
    {COMPRESSION_PACKBITS, {8, 1}},      {COMPRESSION_LZW, {1, 8}},
    {COMPRESSION_ADOBE_DEFLATE, {2, 8}}, {COMPRESSION_CCITTFAX3, {1, 1}},
    {COMPRESSION_CCITTFAX4, {1, 1}},
};

std::vector<Page> ThreePages(const Encoding& encoding) {
    std::vector<Page> pages;
    for (uint32_t page = 0; page < 3; ++page) {
        pages.push_back(RandomPage(
            37, 9, {{"Process", encoding.bits[0], "Process Cyan"}, {"Spot 1", encoding.bits[1]}},
            page));
    }
    return pages;
}

TEST(Container, DeliversEveryEncodingInEveryForm) {
    const TestFolder folder;
    for (const Encoding& encoding : kEncodings) {
        const std::vector<Page> pages = ThreePages(encoding);
        for (const char* mode : {"wl4", "wb4", "wl8", "wb8"}) {
            for (const int fillOrder : {FILLORDER_MSB2LSB, FILLORDER_LSB2MSB}) {
                for (const uint32_t rowsPerStrip : {1U, 4U, 9U, 0xFFFFFFFFU}) {
                    WriteContainer(folder.Name("c.tif"), pages,
                                   Encoded(encoding.compression, fillOrder, rowsPerStrip), mode);
                    EXPECT_EQ(PageStates(folder.Path("c.tif"), pages), "3: good good good")
                        << encoding.compression << " " << mode << " fill order " << fillOrder
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
        const Page page = RandomPage(2000, 2300, {{"one strip", 8}, {"many", 8}}, 1);
        WriteContainer(folder.Name("c.tif"), {page}, [&](TIFF* tiff, std::size_t, std::size_t s) {
            Encoded(compression, FILLORDER_MSB2LSB, s == 0 ? 2300 : 7)(tiff, 0, s);
        });
        ZEJob job(0);
        job.Load(folder.Path("c.tif"));
        job.OpenData(1);
        AImage* const image = job.GetImage(0);
        ASSERT_NE(image, nullptr);
        std::vector<uint32_t> order = {5, 2299, 0, 1400, 1399, 1401, 2298};
        for (uint32_t row = 0; row < 2300; ++row)
            order.push_back(row);
        for (const uint32_t row : order) {
            ASSERT_EQ(RowState(*image, page, 0, row), "good") << row;
            ASSERT_EQ(RowState(*image, page, 1, row), "good") << row;
        }
    }
}

// What a damaged byte does to pixels cannot be seen; that nothing breaks or complains can.
TEST(Container, CutAnywhereNeverDeliversAWrongRow) {
    const TestFolder folder;
    testing::internal::CaptureStderr();
    for (const Encoding& encoding : kEncodings) {
        const std::vector<Page> pages = ThreePages(encoding);
        for (const char* mode : {"wl4", "wb8"}) {
            WriteContainer(folder.Name("c.tif"), pages, Encoded(encoding.compression), mode);
            const std::string whole = folder.Read("c.tif");
            for (std::size_t size = 0; size < whole.size(); size += 7) {
                std::string bytes = whole;
                bytes[size] = static_cast<char>(~bytes[size]);
                PageStates(folder.Write("damaged.tif", bytes), pages);
                bytes.resize(size);
                const std::string states = PageStates(folder.Write("cut.tif", bytes), pages);
                EXPECT_EQ(states.find("wrong"), std::string::npos) << size << " " << states;
                EXPECT_NE(states, "3: good good good") << encoding.compression << " " << size;
            }
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

/// Where the directories of a file stand.
std::vector<std::size_t> FindDirectories(const std::string& path) {
    std::vector<std::size_t> places;
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    do {
        places.push_back(static_cast<std::size_t>(TIFFCurrentDirOffset(tiff)));
    } while (TIFFReadDirectory(tiff) == 1);
    TIFFClose(tiff);
    return places;
}

uint32_t ShortAt(const std::string& bytes, std::size_t at) {
    return static_cast<uint8_t>(bytes.at(at)) |
           static_cast<uint32_t>(static_cast<uint8_t>(bytes.at(at + 1))) << 8;
}

constexpr uint32_t kLink = 0;  // in place of a tag: the directory's link to the next
constexpr uint32_t kPlaceOf = 0xFFFFFF00;

enum Field : std::size_t { kTag = 0, kType = 2, kValue = 8 };  // byte offsets in an entry

/// A classic little-endian file in which one number of a directory's entry for `tag` is another.
std::string Overwritten(std::string bytes, std::size_t directory, uint32_t tag, Field field,
                        uint32_t number) {
    std::size_t at = directory + 2;
    for (uint32_t i = ShortAt(bytes, directory); i > 0 && ShortAt(bytes, at) != tag; --i)
        at += 12;
    for (std::size_t i = 0; i < (tag == kLink || field == kValue ? 4U : 2U); ++i, number >>= 8)
        bytes.at(at + field + i) = static_cast<char>(number & 0xFF);
    return bytes;
}

/// One number that is overwritten.
struct Damage {
    const char* what;
    std::size_t directory;  // two of each page
    uint32_t tag;           // whose entry it is
    Field field;
    uint32_t number;  // kPlaceOf and a directory: where that stands
    const char* states;
    const char* reason;  // why the last page without an image has none
};

constexpr const char* kElsewhere = "the page's directories do not stand together in their place";
constexpr const char* kOutside = "a directory link leads outside the file";
constexpr const char* kLeadsBack = "a directory link leads back";
constexpr const char* kNoSuchPage = "the container has no such page";
constexpr const char* kValuesOutside = "values of a directory stand outside the file";
constexpr const char* kUnreadable = "a directory cannot be read";

constexpr Damage kDamages[] = {
    {"chain ends early", 3, kLink, kTag, 0, "3: good good none", kNoSuchPage},
    {"chain ends inside a page", 2, kLink, kTag, 0, "3: good wrong none", kNoSuchPage},
    {"link outside the file", 3, kLink, kTag, 0x7FFFFFFF, "3: good none none", kOutside},
    {"last link outside the file", 5, kLink, kTag, 0x7FFFFFFF, "3: good good none", kOutside},
    {"link into the header", 5, kLink, kTag, 4, "3: good good none", kOutside},
    {"link into the data", 5, kLink, kTag, 9, "3: good good none",
     "a directory link leads to no directory"},
    {"link to itself", 3, kLink, kTag, kPlaceOf + 3, "3: good none none", kLeadsBack},
    {"link to the first", 5, kLink, kTag, kPlaceOf + 0, "3: good good none", kLeadsBack},
    {"link past a page", 1, kLink, kTag, kPlaceOf + 4, "3: good none none", kNoSuchPage},
    {"another page's number", 3, TIFFTAG_PAGENUMBER, kValue, 0x30002, "3: good wrong wrong", ""},
    {"an earlier page's number", 4, TIFFTAG_PAGENUMBER, kValue, 0x30000, "3: none good none",
     kElsewhere},
    {"a number beyond the count", 4, TIFFTAG_PAGENUMBER, kValue, 0x30003, "3: good good wrong", ""},
    {"a count of one", 0, TIFFTAG_PAGENUMBER, kValue, 0x10000, "1: good", ""},
    {"a count of none", 0, TIFFTAG_PAGENUMBER, kValue, 0, "3: good good good", ""},
    {"no page number", 2, TIFFTAG_PAGENUMBER, kTag, 299, "3: none none good",
     "a directory beside the page's names no page"},
    {"a page number that is none", 0, TIFFTAG_PAGENUMBER, kType, TIFF_LONG, "1: none",
     "the page number of a directory cannot be read"},
    {"no width", 2, TIFFTAG_IMAGEWIDTH, kValue, 0, "3: good none good",
     "a separation has a size of 0"},
    {"other widths", 2, TIFFTAG_IMAGEWIDTH, kValue, 38, "3: good none good",
     "the page's separations differ in size"},
    {"fewer rows", 3, TIFFTAG_IMAGELENGTH, kValue, 8, "3: good none good",
     "the page's separations differ in size"},
    {"depth 3", 2, TIFFTAG_BITSPERSAMPLE, kValue, 3, "3: good none good",
     "a separation has another depth than 1, 2, 4 or 8 bits"},
    {"unknown compression", 2, TIFFTAG_COMPRESSION, kValue, 999, "3: good none good",
     "compression 999 cannot be decoded"},
    {"too few strips", 2, TIFFTAG_ROWSPERSTRIP, kValue, 1, "3: good damaged good", ""},
    {"strips of no rows", 2, TIFFTAG_ROWSPERSTRIP, kValue, 0, "3: good none good", kUnreadable},
    {"no strip offsets", 2, TIFFTAG_STRIPOFFSETS, kTag, 272, "3: good none good", kUnreadable},
    {"offsets outside the file", 2, TIFFTAG_STRIPOFFSETS, kValue, 1U << 30, "3: good none good",
     kValuesOutside},
    {"name outside the file", 2, TIFFTAG_PAGENAME, kValue, 0x7FFFFFF0, "3: good none good",
     kValuesOutside},
    {"a name that is no text", 2, TIFFTAG_PAGENAME, kType, TIFF_DOUBLE, "3: good none good",
     "a tag of a directory cannot be read"},
    // What libtiff complains of, and no page need be lost for.
    {"a private tag, out of order", 2, TIFFTAG_RESOLUTIONUNIT, kTag, 65000, "3: good good good",
     ""},
    {"a private type", 2, TIFFTAG_XRESOLUTION, kType, 99, "3: good good good", ""},
    {"a value that is none", 2, TIFFTAG_RESOLUTIONUNIT, kValue, 9, "3: good good good", ""},
};

TEST(Container, DamageTakesThePagesItBelongsTo) {
    const TestFolder folder;
    const std::vector<Page> pages = ThreePages(kEncodings[0]);
    WriteContainer(folder.Name("c.tif"), pages, Encoded(COMPRESSION_NONE), "wl4");
    const std::string whole = folder.Read("c.tif");
    const std::vector<std::size_t> places = FindDirectories(folder.Name("c.tif"));
    ASSERT_EQ(places.size(), 6U);
    for (const Damage& damage : kDamages) {
        uint32_t number = damage.number;
        if (number >= kPlaceOf) number = static_cast<uint32_t>(places[number - kPlaceOf]);
        const std::string bytes =
            Overwritten(whole, places[damage.directory], damage.tag, damage.field, number);
        std::string reason;
        EXPECT_EQ(PageStates(folder.Write("damaged.tif", bytes), pages, &reason), damage.states)
            << damage.what;
        EXPECT_EQ(reason, damage.reason) << damage.what;
    }
}

// The byte count of the last strip says half of what it is.
TEST(Container, DeliversTheRowsBeforeDamage) {
    const TestFolder folder;
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_LZW,
                                  COMPRESSION_ADOBE_DEFLATE, COMPRESSION_CCITTFAX4}) {
        const bool isPlain = compression == COMPRESSION_NONE;
        const Page page = RandomPage(4000, 40, {{"Cyan", 1}}, 1);
        WriteContainer(folder.Name("c.tif"), {page},
                       Encoded(compression, FILLORDER_MSB2LSB, isPlain ? 20 : 40), "wl4");
        const std::string whole = folder.Read("c.tif");
        const std::size_t place = FindDirectories(folder.Name("c.tif")).at(0);
        // Two 16-bit counts, or one.
        const uint32_t half = isPlain ? 10000 | 5000U << 16 : static_cast<uint32_t>(place / 2);
        ZEJob job(0);
        job.Load(folder.Write("half.tif",
                              Overwritten(whole, place, TIFFTAG_STRIPBYTECOUNTS, kValue, half)));
        job.OpenData(1);
        AImage* const image = job.GetImage(0);
        ASSERT_NE(image, nullptr);
        std::string states;
        for (uint32_t row = 0; row < page.Height; ++row)
            states += RowState(*image, page, 0, row)[0];
        const std::size_t good = std::min(states.find('d'), states.size());
        EXPECT_EQ(states, std::string(good, 'g') + std::string(states.size() - good, 'd'));
        EXPECT_TRUE(good > 12 && good < 40) << compression << " " << states;
        EXPECT_STRNE(image->Failure().text, "");
    }
}

// Data that ends early is no blank paper, and an absurd size is not believed.
TEST(Container, StripsThatDoNotFillThePage) {
    // Three blank rows ("1" each), then the end-of-block mark (two end-of-line codes).
    const std::string fax("\xE0\x01\x00\x10", 4);
    // In the second row a code that no decoder here knows (an extension).
    const std::string unknown("\x81\xF0\x01\x00\x10", 5);
    std::string runs;
    for (int i = 0; i < 100; ++i)
        runs += std::string("\x81\0", 2);  // 128 zero bytes each
    const struct {
        uint32_t width;
        uint32_t rows;
        std::string data;
        const char* lastRow;
    } kCases[] = {
        {1600, 3, fax, "good"},
        {1600, 3, unknown, "damaged"},
        {1600, 8, fax, "damaged"},
        {1600, 60000, fax, "damaged"},
        {12800, 1, runs, "good"},  // a row larger than the file
        {32, 0x7FFFFFFF, runs, "damaged"},
        {1U << 30, 1, runs, "none"},
        {0x7FFFFFFF, 1, fax, "none"},
    };
    const TestFolder folder;
    for (const auto& row : kCases) {
        const bool isFax = row.data != runs;  // of one bit, else packed bytes
        const int bits = isFax ? 1 : 8;
        const int compression = isFax ? COMPRESSION_CCITTFAX4 : COMPRESSION_PACKBITS;
        const Page page = {row.width, 0, {{"Cyan", bits, "", std::string(12800, '\0')}}};
        WriteContainer(folder.Name("c.tif"), {page}, [&](TIFF* tiff, std::size_t, std::size_t) {
            Encoded(compression, FILLORDER_MSB2LSB, row.rows)(tiff, 0, 0);
            TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, row.rows);
            std::string data = row.data;
            TIFFWriteRawStrip(tiff, 0, data.data(), static_cast<tmsize_t>(data.size()));
        });
        ZEJob job(0);
        job.Load(folder.Path("c.tif"));
        job.OpenData(1);
        AImage* const image = job.GetImage(0);
        EXPECT_EQ(image == nullptr ? "none" : RowState(*image, page, 0, row.rows - 1), row.lastRow)
            << row.width << " x " << row.rows;
    }
}

}  // namespace
