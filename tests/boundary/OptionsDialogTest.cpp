// The options dialog by its script, and the options page through its table.

#include <sys/stat.h>

#include "FileSizeLimit.h"
#include "JobRunner.h"

namespace {

constexpr int32_t kShow = 3;
constexpr int32_t kRestore = 1003;
constexpr int32_t kWhiteList = 1016;

constexpr const char* kOffer = "2|Spot,Overprint,More;1,2;0,1";
constexpr const char* kVisible = "[1,2,1003,1043,1016]";

/// A page that createDriverPage answered, called by position as a host does.
class Page {
  public:
    Page(const Driver& driver, DriverOptionBlock* block, PrintSettings* settings)
        : object_(driver.Export<void*(DriverOptionBlock*, PrintSettings*)>("createDriverPage")(
              block, settings)) {}
    ~Page() {
        if (object_ != nullptr) Call<void>(1);
    }
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    explicit operator bool() const { return object_ != nullptr; }
    template <class Result = int32_t, class... Arguments>
    Result Call(int entry, Arguments... arguments) const {
        using Function = Result (*)(void*, Arguments...);
        const auto* table = *static_cast<void* const* const*>(object_);
        return reinterpret_cast<Function>(table[entry])(object_, arguments...);
    }

  private:
    void* object_;
};

enum PageOperation {
    kOnInitDialog = 2,
    kOnSetActive,
    kOnKillActive,
    kOnOK,
    kOnCommand,
    kSelect,
    kSelection,
    kIsVisible,
    kCount,
    kItem
};

class OptionsDialogTest : public BoundaryTest {
  protected:
    void Offer(const std::string& offer) {
        Install(4, fmt::format(R"(CreateFolder="No" SupportWhite="{}")", offer));
    }
    void Store(const std::string& type) {
        WriteText(
            folder.Options() / "QL_DROP_a.xml",
            fmt::format(R"(<RootElement><DriverOptions SupportWhiteType="{}"/></RootElement>)",
                        type));
        block.Kind = 3;
        SetText(block.FileName, "QL_DROP_a.xml");
    }
    /// The choice in the block's file; "" without a file.
    std::string Stored() const {
        const std::string text = ReadText(folder.Options() / block.FileName);
        const std::size_t place = text.find("Type=\"");
        return place == std::string::npos
                   ? ""
                   : text.substr(place + 6, text.find('"', place + 6) - place - 6);
    }
    /// The selections that the dialog reported.
    Texts Answer(const std::string& script) {
        WriteText(folder.Root() / "script", script);
        setenv("QL_DIALOG_SCRIPT", (folder.Root() / "script").c_str(), 1);
        const std::size_t before = folder.Messages().size();
        EXPECT_EQ(driver->Call(kShowDriverOptions, &block, kShow, &settings, nullptr), 1);
        unsetenv("QL_DIALOG_SCRIPT");
        Texts reports = folder.Messages();
        reports.erase(reports.begin(), reports.begin() + static_cast<std::ptrdiff_t>(before));
        return reports;
    }
    static std::string Report(int selection,
                              const std::string& items = R"(["Spot","Overprint","More"])",
                              const std::string& visible = kVisible) {
        return fmt::format(R"({{"dialog":101,"items":{},"selection":{},"visible":{}}})", items,
                           selection, visible);
    }

    PrintSettings settings = Settings(kModelName);
    DriverOptionBlock block{};
};

TEST_F(OptionsDialogTest, Script) {
    const struct {
        const char* stored;
        const char* script;
        std::vector<int> selections;  ///< as reported
        const char* storedAfter;
    } cases[] = {
        {"-1", "press 1\n", {1}, "2"},
        {"1", "press 1", {0}, "1"},
        {"7", "press 1", {-1}, "7"},
        {"-1", "select 0\r\npress 1\r\n", {1, 0}, "1"},
        {"-1", "select 0\npress 2\nselect 1\n", {1, 0}, "-1"},
        {"-1", "select 0\n", {1, 0}, "-1"},
        {"1", "select 9\npress 1\n", {0, -1}, "1"},
        {"1", "select 2\npress 1\n", {0, 2}, "1"},  // a name without a code
        {"1", "press 77\nclose\n\npress\npress 1", {0, 0, 0, 0, 0}, "1"},
        {"1", "press 1003\npress 1\n", {0, 1}, "2"},
        {"1", "press 1003\npress 2\n", {0, 1}, "1"},
        {"", "press 1\n", {1}, "2"},
    };
    Offer(kOffer);
    for (const auto& [stored, script, selections, storedAfter] : cases) {
        SCOPED_TRACE(script);
        Store(stored);
        const DriverOptionBlock before = block;
        const Texts reports = Answer(script);
        ASSERT_EQ(reports.size(), selections.size());
        for (std::size_t i = 0; i < reports.size(); ++i)
            EXPECT_EQ(reports[i], Report(selections[i]));
        EXPECT_EQ(Stored(), storedAfter);
        EXPECT_EQ(Listing(folder.Options()), Texts{block.FileName});
        const bool isNew = std::string(script) == "press 1003\npress 1\n";
        EXPECT_EQ(std::memcmp(&before, &block, sizeof block) != 0, isNew);
        std::filesystem::remove(folder.Options() / block.FileName);
    }
}

// A default that is not offered selects nothing, and nothing is stored for it.
TEST_F(OptionsDialogTest, OtherOffers) {
    Offer("5|A;1;1");
    Store("1");
    EXPECT_EQ(Answer("press 1003\npress 1"),
              (Texts{Report(0, R"(["A"])"), Report(-1, R"(["A"])")}));
    EXPECT_EQ(Stored(), "-1");
    Offer("2|None,A;0,2;0,1");
    Store("0");
    EXPECT_EQ(Answer("press 1"), Texts{Report(0, R"(["None","A"])")});
    EXPECT_EQ(Stored(), "0");
    Offer("");
    Store("3");
    EXPECT_EQ(Answer("press 1"), Texts{Report(-1, "[]", "[1,2,1003]")});
    EXPECT_EQ(Stored(), "3");
}

// The earlier file stands in its place until the dialog has ended: a cancelled one needs no room to
// bring it back. What OK cannot store is said.
TEST_F(OptionsDialogTest, OnAFullDisk) {
    Offer(kOffer);
    Store("1");
    const std::filesystem::path file = folder.Options() / block.FileName;
    const std::string large = ReadText(file) + "<!--" + std::string(10000, 'x') + "-->";
    WriteText(file, large);
    const DriverOptionBlock before = block;
    struct stat earlier = {};
    ASSERT_EQ(stat(file.c_str(), &earlier), 0);
    const FileSizeLimit full(4096);  // messages and log have room
    for (const char* script :
         {"press 1003\npress 1003\npress 2", "press 1003\n", "select 1\npress 1"}) {
        Answer(script);
        struct stat now = {};
        EXPECT_EQ(stat(file.c_str(), &now), 0);
        EXPECT_EQ(now.st_ino, earlier.st_ino) << script;
        EXPECT_EQ(ReadText(file), large);
        EXPECT_EQ(std::memcmp(&before, &block, sizeof block), 0) << script;
        EXPECT_EQ(Listing(folder.Options()), Texts{before.FileName}) << script;
    }
    ASSERT_EQ(folder.Log().size(), 1U) << "of the choice that OK did not store";
    EXPECT_NE(folder.Log()[0].find(file.string() + ": File too large"), std::string::npos);
}

// A block whose file is gone gets one while the dialog is open; Cancel takes it away.
TEST_F(OptionsDialogTest, AFileThatIsGone) {
    Offer(kOffer);
    block.Kind = 3;
    SetText(block.FileName, "QL_DROP_gone.xml");
    Answer("press 2");
    EXPECT_STREQ(block.FileName, "QL_DROP_gone.xml");
    EXPECT_TRUE(Listing(folder.Options()).empty());
    Answer("press 1");
    EXPECT_STRNE(block.FileName, "QL_DROP_gone.xml");
    EXPECT_EQ(Stored(), "2");
}

TEST_F(OptionsDialogTest, Page) {
    Offer(kOffer);
    Page page(*driver, &block, &settings);
    ASSERT_TRUE(page);
    EXPECT_EQ(block.Kind, 3);
    EXPECT_EQ(Stored(), "-1");
    EXPECT_EQ(page.Call(kOnInitDialog), 1);
    EXPECT_EQ(page.Call(kSelection), -1);
    ASSERT_EQ(page.Call(kCount), 3);
    char name[256];
    EXPECT_EQ(page.Call(kItem, 1, name), 1);
    EXPECT_STREQ(name, "Overprint");
    for (const auto& [id, visible] :
         {std::pair{1, 0}, {2, 0}, {1003, 1}, {1043, 1}, {kWhiteList, 1}, {5, 0}})
        EXPECT_EQ(page.Call(kIsVisible, id), visible) << id;
    EXPECT_EQ(page.Call(kOnSetActive), 1);
    EXPECT_EQ(page.Call(kSelection), 1);
    EXPECT_EQ(page.Call(kSelect, 0), 0);
    EXPECT_EQ(page.Call(kOnOK), 1);
    EXPECT_EQ(Stored(), "-1") << "leaving the page stores the choice";
    EXPECT_EQ(page.Call(kOnKillActive), 1);
    EXPECT_EQ(Stored(), "1");
    // The defaults: a new file, and the model's default on show.
    const std::string earlier = block.FileName;
    EXPECT_EQ(page.Call(kOnCommand, 0x10000 + kRestore), 1) << "the number of no button";
    EXPECT_EQ(block.FileName, earlier);
    EXPECT_EQ(page.Call(kOnCommand, kRestore), 1);
    EXPECT_NE(block.FileName, earlier);
    EXPECT_EQ(page.Call(kSelection), 1);
    EXPECT_EQ(Stored(), "-1");
    EXPECT_EQ(page.Call(kSelect, 3), -1);
    EXPECT_EQ(page.Call(kSelection), -1);
    EXPECT_EQ(page.Call(kOnKillActive), 1);
    EXPECT_EQ(Stored(), "-1");
}

TEST_F(OptionsDialogTest, PagesWithoutSettingsOrBlock) {
    Store("1");
    EXPECT_FALSE(Page(*driver, nullptr, &settings));
    Page page(*driver, &block, nullptr);
    ASSERT_TRUE(page);
    EXPECT_EQ(page.Call(kOnSetActive), 1) << "before it has a window";
    EXPECT_EQ(page.Call(kOnInitDialog), 1);
    EXPECT_EQ(page.Call(kCount), 0);
    EXPECT_EQ(page.Call(kIsVisible, kWhiteList), 0);
    EXPECT_EQ(page.Call(kOnKillActive), 1);
    EXPECT_EQ(Stored(), "1");
}

}  // namespace
