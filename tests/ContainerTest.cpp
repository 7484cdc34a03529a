#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "TestFolder.h"
#include "boundary/ContainerMaker.h"
#include "host/ZEJob.h"

namespace {

/// A row as it is delivered: "good", "damaged" when it fails, "wrong" when it is not as it was
/// made.
std::string RowState(AImage& image, const Page& page, uint32_t separation, uint32_t row) {
    const int depth = page.Separations[separation].Depth;
    const std::size_t rowBytes = RowBytes(page.Width, depth);
    std::string bytes(rowBytes, '\0');
    auto* const buffer = reinterpret_cast<uint8_t*>(bytes.data());
    if (image.ReadRow(separation, static_cast<int32_t>(row), 1, buffer, 0) == 0) return "damaged";
    std::string expected = page.Separations[separation].Rows.substr(row * rowBytes, rowBytes);
    // Bits behind the last pixel mean nothing.
    const std::size_t spareBits = rowBytes * 8 - std::size_t{page.Width} * unsigned(depth);
    bytes.back() = static_cast<char>(bytes.back() & (0xFF << spareBits));
    expected.back() = static_cast<char>(expected.back() & (0xFF << spareBits));
    return bytes == expected ? "good" : "wrong";
}

/// What became of a page: "none" without an image, else the worst of its rows, and "wrong" when
/// its separations are not those that were made.
std::string PageState(ZEJob& job, uint32_t number, const Page& page) {
    AImage* const image = job.GetImage(number);
    if (image == nullptr) return "none";
    AObList<AColorant> found;
    image->GetSeparations(found);
    if (found.size() != page.Separations.size()) return "wrong";
    std::string state = "good";
    for (uint32_t s = 0; s < found.size(); ++s) {
        const Separation& made = page.Separations[s];
        const std::string& display = made.DisplayName.empty() ? made.Name : made.DisplayName;
        if (found[s]->Depth != made.Depth || found[s]->DisplayName != display) return "wrong";
        for (uint32_t row = 0; row < page.Height; ++row) {
            const std::string read = RowState(*image, page, s, row);
            if (read != "good" && state != "wrong") state = read;
        }
    }
    return state;
}

/// The page count and what became of each page.
std::string PageStates(const AFilePath& path, const std::vector<Page>& pages) {
    ZEJob job(0);
    job.Load(path);
    job.OpenData(1);
    std::string states = std::to_string(job.PageCount) + ":";
    for (uint32_t i = 0; i < pages.size() && i < static_cast<uint32_t>(job.PageCount); ++i)
        states += ' ' + PageState(job, i, pages[i]);
    return states;
}

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

AlterDirectory Encoded(int compression, int fillOrder = FILLORDER_MSB2LSB,
                       uint32_t rowsPerStrip = 4) {
    return [=](TIFF* tiff, std::size_t, std::size_t) {
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
        TIFFSetField(tiff, TIFFTAG_FILLORDER, fillOrder);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    };
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

enum Field : std::size_t { kTag = 0, kValue = 8 };  // byte offsets in an entry

/// One number that is overwritten.
struct Damage {
    const char* what;
    std::size_t directory;  // two of each page
    uint32_t tag;           // whose entry it is
    Field field;
    uint32_t number;  // kPlaceOf and a directory: where that stands
    const char* states;
};

constexpr Damage kDamages[] = {
    {"chain ends early", 3, kLink, kTag, 0, "3: good good none"},
    {"chain ends inside a page", 2, kLink, kTag, 0, "3: good wrong none"},
    {"link outside the file", 3, kLink, kTag, 0x7FFFFFFF, "3: good none none"},
    {"last link outside the file", 5, kLink, kTag, 0x7FFFFFFF, "3: good good none"},
    {"link to itself", 3, kLink, kTag, kPlaceOf + 3, "3: good none none"},
    {"link to the first", 5, kLink, kTag, kPlaceOf + 0, "3: good good none"},
    {"link past a page", 1, kLink, kTag, kPlaceOf + 4, "3: good none none"},
    {"another page's number", 3, TIFFTAG_PAGENUMBER, kValue, 0x30002, "3: good wrong wrong"},
    {"an earlier page's number", 4, TIFFTAG_PAGENUMBER, kValue, 0x30000, "3: none good none"},
    {"a number beyond the count", 4, TIFFTAG_PAGENUMBER, kValue, 0x30003, "3: good good wrong"},
    {"a count of one", 0, TIFFTAG_PAGENUMBER, kValue, 0x10000, "1: good"},
    {"a count of none", 0, TIFFTAG_PAGENUMBER, kValue, 0, "3: good good good"},
    {"no page number", 2, TIFFTAG_PAGENUMBER, kTag, 299, "3: none none good"},
    {"depth 3", 2, TIFFTAG_BITSPERSAMPLE, kValue, 3, "3: good none good"},
    {"unknown compression", 2, TIFFTAG_COMPRESSION, kValue, 999, "3: good none good"},
    {"too few strips", 2, TIFFTAG_ROWSPERSTRIP, kValue, 1, "3: good damaged good"},
    {"strips of no rows", 2, TIFFTAG_ROWSPERSTRIP, kValue, 0, "3: good none good"},
    {"no strip offsets", 2, TIFFTAG_STRIPOFFSETS, kTag, 272, "3: good none good"},
    {"offsets outside the file", 2, TIFFTAG_STRIPOFFSETS, kValue, 1U << 30, "3: good none good"},
    {"name outside the file", 2, TIFFTAG_PAGENAME, kValue, 0x7FFFFFF0, "3: good none good"},
};

TEST(Container, DamageTakesThePagesItBelongsTo) {
    const TestFolder folder;
    const std::vector<Page> pages = ThreePages(kEncodings[0]);
    WriteContainer(folder.Name("c.tif"), pages, Encoded(COMPRESSION_NONE), "wl4");
    const std::string whole = folder.Read("c.tif");
    const std::vector<std::size_t> places = FindDirectories(folder.Name("c.tif"));
    ASSERT_EQ(places.size(), 6U);
    for (const Damage& damage : kDamages) {
        std::size_t at = places[damage.directory] + 2;
        for (uint32_t i = ShortAt(whole, at - 2); i > 0 && ShortAt(whole, at) != damage.tag; --i)
            at += 12;
        uint32_t number = damage.number;
        if (number >= kPlaceOf) number = static_cast<uint32_t>(places[number - kPlaceOf]);
        const bool isShort = damage.tag != kLink && damage.field != kValue;
        std::string bytes = whole;
        for (std::size_t i = 0; i < (isShort ? 2U : 4U); ++i, number >>= 8)
            bytes.at(at + damage.field + i) = static_cast<char>(number & 0xFF);
        EXPECT_EQ(PageStates(folder.Write("damaged.tif", bytes), pages), damage.states)
            << damage.what;
    }
}

// Data that ends early is no blank paper, and an absurd size is not believed.
TEST(Container, StripsThatDoNotFillThePage) {
    // Three blank rows ("1" each), then the end-of-block mark (two end-of-line codes).
    const std::string fax("\xE0\x01\x00\x10", 4);
    std::string runs;
    for (int i = 0; i < 100; ++i)
        runs += std::string("\x81\0", 2);  // 128 zero bytes each
    const struct {
        uint32_t width;
        uint32_t rows;
        bool isFax;  // of one bit, else packed bytes
        const char* lastRow;
    } kCases[] = {
        {1600, 3, true, "good"},
        {1600, 8, true, "damaged"},
        {1600, 60000, true, "damaged"},
        {12800, 1, false, "good"},  // a row larger than the file
        {32, 0x7FFFFFFF, false, "damaged"},
        {1U << 30, 1, false, "none"},
        {0x7FFFFFFF, 1, true, "none"},
    };
    const TestFolder folder;
    for (const auto& row : kCases) {
        const int bits = row.isFax ? 1 : 8;
        const int compression = row.isFax ? COMPRESSION_CCITTFAX4 : COMPRESSION_PACKBITS;
        const Page page = {row.width, 0, {{"Cyan", bits, "", std::string(12800, '\0')}}};
        WriteContainer(folder.Name("c.tif"), {page}, [&](TIFF* tiff, std::size_t, std::size_t) {
            Encoded(compression, FILLORDER_MSB2LSB, row.rows)(tiff, 0, 0);
            TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, row.rows);
            std::string data = row.isFax ? fax : runs;
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
