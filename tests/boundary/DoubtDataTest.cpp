// Doubts about a page under way, in both modes: lines, temporary data, white, headers and tickets;
// and what is worth a warning.

#include <fcntl.h>

#include "DoubtTest.h"
#include "OpenFiles.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kTooLarge = "File too large";
constexpr const char* kBadDescriptor = "Bad file descriptor";

/// What a file of the page holds by default: these bytes, or fewer of them.
struct File {
    const char* Name;
    std::string Bytes;
    bool IsShort = false;
};

struct Row {
    Saying Said;
    const char* Answers;  ///< by default
    const char* Strict;   ///< '|' between alternatives
    std::vector<Edit> Edits;
    Order Ordered;
    std::vector<File> Files{};
};

class DoubtDataTest : public DoubtTest {
  protected:
    void Walk(const Row& row) {
        for (const char* mode : {static_cast<const char*>(nullptr), "1"}) {
            SCOPED_TRACE(fmt::format("{} {} {}", row.Said.Names, row.Edits[0].to,
                                     mode == nullptr ? "by default" : "strict"));
            Install(row.Edits);
            const Outcome outcome = Do(row.Ordered, mode);
            if (mode != nullptr) {
                EXPECT_TRUE(HasName(row.Strict, outcome.Answers)) << outcome.Answers;
                ExpectStrict({row.Said}, kJobName, outcome);
                continue;
            }
            EXPECT_EQ(outcome.Answers, row.Answers);
            ExpectSaid({row.Said}, kJobName, 1, outcome);
            for (const auto& [name, bytes, isShort] : row.Files) {
                const bool isTiff = std::string(name).ends_with(".tif");
                const std::string data = isTiff ? TiffRows(folder.Out() / name) : Output(name);
                EXPECT_TRUE(isShort ? data.size() < bytes.size() && bytes.starts_with(data)
                                    : data == bytes)
                    << name << ": " << data.size() << " of " << bytes.size() << " bytes";
            }
        }
    }
    Order Ready(const std::string& white) const {
        Order order = Written(Union(), white);
        order.Pages = {NumberedPage(32, 2, 2, 1)};
        return order;
    }
    /// After the first lines the file takes no more; before the page's end it cannot be read.
    static Order Unwritable(const fs::path& path) {
        return {.Steps = 3, .IsRowAStep = true, .Midway = [path] {
                    EXPECT_EQ(Reopen(path, O_RDONLY), 1);
                }};
    }
    static Order Unreadable(const fs::path& path) {
        return {.Steps = 2, .Midway = [path] { EXPECT_EQ(Reopen(path, O_WRONLY), 1); }};
    }
    /// Over files of an earlier job, so that no channel is gathered beside its own.
    Order OverOld(Order order) const {
        order.Before = [this] {
            for (const char* name : {"C1.raw", "C1.tif", "C2.raw"})
                WriteText(folder.Out() / name, "old");
        };
        return order;
    }
};

TEST_F(DoubtDataTest, LinesAndTemporaryData) {
    // A channel is larger than any buffer, and there is room for it and for no format around it.
    page = RandomPage(8000, 300, {{"C1"}, {"C2"}}, 7);
    const std::string c1 = ChannelBytes(page, "C1");
    const std::string c2 = ChannelBytes(page, "C2");
    const std::string up1 = ChannelBytes(page, "C1", true);
    const std::string up2 = ChannelBytes(page, "C2", true);
    const std::vector<File> forward = {{"C1.raw", c1}, {"C2.raw", c2}};
    const std::vector<File> short1 = {{"C1.raw", c1, true}};
    const std::vector<File> short2 = {{"C1.raw", up1}, {"C2.raw", up2, true}};
    const std::vector<File> shortBoth = {{"C1.raw", up1, true}, {"C2.raw", up2, true}};
    const std::vector<File> shortTiff = {{"C1.tif", up1, true}, {"C2.raw", up2}};
    const std::vector<File> noWhite = {{"C1.raw", c1}, {"C2.raw", c2}, {"W.raw", ""}};
    const std::vector<File> partWhite = {{"C2.raw", up2}, {"W.raw", United(page, true), true}};
    const std::vector<File> tiffWhite = {{"C2.raw", c2}, {"W.tif", United(page), true}};
    const Order noFolder = Missing(folder.Temp());
    const Order full = {.Room = 300'000};
    const Order half = {.Room = 150'000};
    const Order readingFails = OverOld(Unreadable(Gathered()));
    const Saying noData = {"channel_data", kNoSuchFile};
    const Saying unread = {"channel_data|C1.raw|C2.raw", kBadDescriptor};
    const Saying white = {"TempWhiteData|W.raw"};
    const Saying noWhiteData = {white.Names, kNoSuchFile};
    const Saying badWhite = {white.Names, kBadDescriptor};
    const Saying largeLine = {"C1.raw", kTooLarge};
    const Saying largeTiff = {"C1.tif", kTooLarge};
    const Saying largeWhite = {"W.tif", kTooLarge};
    const Edit tiff = {"C1.raw", "C1.tif"};
    const Row rows[] = {
        {noData, "1111", "10", {kReversed}, noFolder, forward},
        {noData, "1111", "10", {kReversed, kByLine}, noFolder, forward},
        {{"channel_data"}, "1111", "10", {kReversed}, Taken(Gathered()), forward},
        {largeTiff, "1111", "10", {kReversed, tiff}, OverOld(full), shortTiff},
        {largeWhite, "1111", "110", {White(2), {"W.raw", "W.tif"}}, full, tiffWhite},
        {unread, "11", "0", {kReversed}, readingFails, short2},
        {unread, "11", "0", {kReversed, kByLine}, readingFails, shortBoth},
        {noWhiteData, "1111", "10|110", {White(2)}, noFolder, noWhite},
        {noWhiteData, "1111", "10|110", {White(1), kByLine}, noFolder, noWhite},
        {white, "1111", "10|110", {White(1)}, Taken(Union()), noWhite},
        {badWhite, "111", "0|10", {White(2)}, Unwritable(Union()), noWhite},
        {badWhite, "11", "0", {White(2), kReversed}, Unreadable(Union()), partWhite},
        {white, "1111", "110", {White(4)}, Ready(""), {{"W.raw", ""}}},
        {white, "1111", "110", {White(6)}, Ready("aaaabb"), {{"W.raw", "aaaabbaa"}}},
        {white, "1111", "110", {White(4)}, Ready("aaaabbbbc"), {{"W.raw", "aaaabbbb"}}},
        {largeLine, "10", "10", {White(0)}, half, short1},
        {largeLine, "10", "10", {kByLine}, half, short1},
        {largeTiff, "10", "10", {tiff}, full, {{"C1.tif", c1, true}}},
    };
    for (const Row& row : rows)
        Walk(row);
    Install({White(4)});  // as many lines as the page has are no doubt
    EXPECT_EQ(Do(Ready("aaaabbbb"), "1").Answers, "1111");
    EXPECT_EQ(Output("W.raw"), "aaaabbbb");
}

TEST_F(DoubtDataTest, HeadersAndTickets) {
    const fs::path fields = Installed("HeaderTemplates/t.txt");
    const fs::path ticket = Installed("JobTicketTemplates/t.xml");
    const fs::path head = folder.Out() / "head.bin";
    const Edit late = {"head.bin\"", "head.bin\" EndRip=\"yes\""};
    const Edit inSub = {"head.bin", "sub/head.bin"};
    const Edit above = {"head.bin", "../head.bin"};
    std::string four;
    for (int i = 0; i < 4; ++i)
        four += "char,[600]x\r\n";
    const Order plain;
    const Order cut = Written(fields, four);
    Order full = Written(fields, four.substr(0, 3 * four.size() / 4));
    full.Room = 1500;
    // A disk that takes the template's copy, and not the ticket.
    const std::string text = std::string(1992, 'x') + "QL_TILES";
    Order unfilled = Written(ticket, text);
    unfilled.Room = text.size();
    unfilled.Tiles = 2;
    const Saying noHeader = {"t.txt|head.bin", kNoSuchFile};
    const Saying largeHeader = {"head.bin", kTooLarge};
    const std::string c2 = ChannelBytes(page, "C2");
    const std::vector<File> none = {{"C2.raw", c2}, {"head.bin", ""}, {"t.xml", ""}};
    const std::string field = "x" + std::string(599, '\0');
    const std::vector<File> three = {{"C2.raw", c2}, {"head.bin", field + field + field}};
    const std::vector<File> filled = {{"Order7-tile1/C2.raw", c2}, {"Order7-tile1/t.xml", text}};
    const Row rows[] = {
        {noHeader, "1111", "0", {kHeader}, Missing(fields), none},
        {noHeader, "1111", "110", {kHeader, late}, Missing(fields), none},
        {{"t.txt|head.bin"}, "1111", "0", {kHeader}, Taken(fields), none},
        {{"head.bin"}, "1111", "0", {kHeader}, Taken(head), none},
        {{"head.bin"}, "1111", "110", {kHeader, late}, Taken(head), none},
        {{"head.bin", kNoSuchFile}, "1111", "0", {kHeader, inSub}, plain, none},
        {{"head.bin"}, "1111", "0", {kHeader, above}, plain, none},
        {largeHeader, "1111", "0", {kHeader}, full, none},
        {largeHeader, "1111", "110", {kHeader, late}, full, none},
        {{"t.txt|head.bin"}, "1111", "0", {kHeader}, cut, three},
        {{"t.xml", kNoSuchFile}, "1111", "0", {kTicket}, Missing(ticket), none},
        {{"t.xml"}, "1111", "0", {kTicket}, Taken(ticket), none},
        {{"t.xml"}, "1111", "0", {kTicket}, Taken(folder.Out() / "t.xml"), none},
        {{"t.xml", kTooLarge}, "1111", "0", {kTicket}, unfilled, filled},
    };
    for (const Row& row : rows) {
        SetUp();
        Walk(row);
    }
    EXPECT_EQ(Output("Order7-tile1/t.xml"), text) << "strict, too";
    EXPECT_FALSE(fs::exists(folder.Root() / "head.bin"));
}

TEST_F(DoubtDataTest, Warnings) {
    const Edit small = {"sizeV=\"0\"", "sizeV=\"8\""};
    const Edit large = {"sizeV=\"0\"", "sizeV=\"20001\""};
    const Edit png = {"sizeV=\"0\"", "sizeV=\"8\" type=\"PNG\""};
    const Edit late = {"head.bin\"", "head.bin\" EndRip=\"yes\""};
    const Order plain;
    const Order noThumbnail = {.Thumbnail = "none"};
    const Order two = {.Pages = {page, page}};
    const Order tiles = {.Pages = {page, page}, .Tiles = 2};
    const Order taken = Taken(folder.Out() / "thumbnail.bmp");
    Order both = taken;
    both.Thumbnail = JobFile();
    const struct {
        Texts Names;
        std::vector<Edit> Edits;
        Order Ordered;
    } rows[] = {
        {{"out"}, {small}, two},
        {{}, {small}, tiles},
        {{"head.bin"}, {kHeader, late, small}, tiles},
        {{"out", "head.bin"}, {kHeader, late, small}, two},
        {{"thumbnail.bmp|20001"}, {large}, plain},
        {{"thumbnail.bmp"}, {small}, taken},
        {{"thumbnail.bmp", "thumbnail.bmp"}, {small}, both},
        {{}, {small}, noThumbnail},
        {{"thumbnail.bmp|libpng3.so|libpng3.dll"}, {png}, plain},
    };
    // Beside this copy of the library stands none for PNG.
    const fs::path copy = folder.Root() / "libOutputDriver.so";
    fs::copy_file(OUTPUT_DRIVER_LIBRARY, copy);
    for (const auto& [names, edits, order] : rows) {
        for (const char* mode : {static_cast<const char*>(nullptr), "1"}) {
            SCOPED_TRACE(::testing::PrintToString(names) + edits[0].to);
            Install(edits);
            driver.reset();
            driver = std::make_unique<Driver>(copy.c_str());
            EXPECT_TRUE(IsPrinted(Do(order, mode).Answers));
            EXPECT_EQ(Said('E'), Texts{});
            const Texts messages = Said('W');
            EXPECT_EQ(messages.size(), names.size()) << ::testing::PrintToString(messages);
            for (std::size_t i = 0; i < std::min(messages.size(), names.size()); ++i)
                EXPECT_TRUE(HasName(messages[i], names[i])) << messages[i];
        }
    }
    driver.reset();
}

}  // namespace
