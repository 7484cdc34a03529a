#include "DoubtTest.h"

#include <algorithm>

#include "FileSizeLimit.h"
#include "OpenFiles.h"
#include "SystemStandIns.h"

namespace fs = std::filesystem;

namespace {

constexpr int64_t kStandsStill = 0;
constexpr int64_t kRowAStep = 201;  // milliseconds between two looks at the clock
constexpr int32_t kTileRows[] = {1, 2};

/// What fits into the status text, in whole characters of UTF-8.
std::string Cut(const std::string& text) {
    std::size_t count = std::min(text.size(), sizeof JobStatusRecord::StatusText - 1);
    while (count < text.size() && (static_cast<unsigned char>(text[count]) & 0xC0U) == 0x80)
        --count;
    return text.substr(0, count);
}

/// The answers of the steps to the end.
std::string Steps(Job& job, const Order& order) {
    if (order.Midway) {
        const StandIn clock(clockStepMs, order.IsRowAStep ? kRowAStep : kStandsStill);
        for (int step = 0; step < order.Steps; ++step)
            EXPECT_EQ(job.Step(), 1);
        order.Midway();
        SetText(job.Status.StatusText, "");
        job.Status.StatusKind = 0;
    }
    const StandIn clock(clockStepMs, kStandsStill);
    return job.Run();
}

bool IsNamePart(const std::string& text, std::size_t at) {
    const auto letter = static_cast<unsigned char>(at < text.size() ? text[at] : ' ');
    return std::isalnum(letter) != 0 || letter == '_' || letter == '-';
}

bool HasOneName(const std::string& text, const std::string& name) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos; ++at) {
        const std::size_t end = at + name.size();
        const bool goesOn =
            IsNamePart(text, end) || (text[end] == '.' && IsNamePart(text, end + 1));
        if (name.empty() || (!goesOn && (at == 0 || !IsNamePart(text, at - 1)))) return true;
    }
    return false;
}

}  // namespace

Edit White(int type) {
    return {kRules, fmt::format(R"({0} SupportWhite="{1}|A;{1};1")", kRules, type)};
}

bool HasName(const std::string& text, const std::string& names) {
    const std::size_t bar = names.find('|');
    return HasOneName(text, names.substr(0, bar)) ||
           (bar != std::string::npos && HasName(text, names.substr(bar + 1)));
}

bool Says(const std::string& message, const std::string& job, const Saying& saying) {
    return HasOneName(message, job) && HasName(message, saying.Names) &&
           message.find(saying.Reason) != std::string::npos;
}

Order Missing(const fs::path& path) {
    return {.Before = [path] { fs::remove_all(path); }};
}

Order Written(const fs::path& path, const std::string& text) {
    return {.Before = [path, text] { WriteText(path, text); }};
}

Order Taken(const fs::path& path) {
    return {.Before = [path] {
        fs::remove_all(path);
        fs::create_directories(path / "folder");
    }};
}

std::string United(const Page& page, bool bottomFirst) {
    std::string lines = ChannelBytes(page, page.Separations[0].Name, bottomFirst);
    const std::string others = ChannelBytes(page, page.Separations[1].Name, bottomFirst);
    for (std::size_t i = 0; i < lines.size(); ++i)
        lines[i] = static_cast<char>(lines[i] | others[i]);
    return lines;
}

void DoubtTest::SetUp() {
    for (const auto& [name, text] : {std::pair{"HeaderTemplates/t.txt", "int8,7\r\n"},
                                     {"JobTicketTemplates/t.xml", "[QL_TILES]"}}) {
        fs::remove_all(Installed(name));
        WriteText(Installed(name), text);
    }
}

void DoubtTest::Install(const std::vector<Edit>& edits) {
    const Model model = {.Colours = {{"C1", "C1.raw"}, {"C2", "C2.raw"}, {"White", "W.raw"}},
                         .ColorModes = {{0, 1}, {1, 0}, {0}},
                         .OutputRules = kRules,
                         .OutputElements = kElements};
    BoundaryTest::Install(Edited(Describe(model), edits));
}

Outcome DoubtTest::Do(Order order, const char* strict) {
    fs::remove(folder.Root() / "log");
    fs::remove_all(folder.Temp());
    fs::create_directory(folder.Temp());
    EmptyOutputFolder();
    if (order.Pages.empty()) order.Pages = {page};
    Job job = MakeJob(order.Pages, order.Choices);
    SetText(job.Status.ThumbnailPath, order.Thumbnail);
    job.Status.CustomColorModeXml = order.CustomColorMode;
    job.Status.JobState = order.PortKind;
    job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
    job.Status.TileCount = order.Tiles;
    job.Status.TileRowNumbers = kTileRows;
    if (order.Before) order.Before();

    const Texts openBefore = OpenFiles();
    std::string answers = "-";
    {
        const FileSizeLimit limit(order.Room);
        strict == nullptr ? unsetenv("QL_STRICT") : setenv("QL_STRICT", strict, 1);
        const int32_t opened = job.Open();
        const bool wasStrict = strict != nullptr && !HasName("0", strict);
        setenv("QL_STRICT", wasStrict ? "0" : "1", 1);  // too late for this job
        if (opened == 1) {
            const fs::path out = order.Folder.empty() ? folder.Out() : order.Folder;
            EXPECT_EQ(job.Port(out, std::string(kJobName) + ".ps"), 1);
            answers = Steps(job, order);
        }
        unsetenv("QL_STRICT");
    }
    EXPECT_TRUE(job.HasEnded());
    EXPECT_EQ(OpenFiles(), openBefore) << "left open";
    for (const std::string& name : Listing(folder.Root())) {
        const bool isTemporary = name.starts_with("base/Temp/") || name.ends_with(".tmp");
        EXPECT_TRUE(!isTemporary || name.ends_with('/') ||
                    ReadText(folder.Root() / name) == kTheirs)
            << name;
    }
    return {answers, job.Status.StatusText, job.Status.StatusKind};
}

Texts DoubtTest::Said(char level) const {
    Texts messages;
    for (const std::string& line : folder.Log()) {
        const std::size_t end = line.find("): ");
        const bool isEntry = (line.starts_with("E ") || line.starts_with("W ")) &&
                             end != std::string::npos && end + 3 < line.size();
        EXPECT_TRUE(isEntry) << line;
        if (isEntry && line[0] == level && line != kStepLogLine)
            messages.push_back(line.substr(end + 3));
    }
    return messages;
}

void DoubtTest::ExpectSaid(const std::vector<Saying>& sayings, const std::string& job,
                           std::size_t times, const Outcome& outcome) {
    const Texts messages = Said('E');
    EXPECT_EQ(messages.size(), sayings.size() * times) << ::testing::PrintToString(messages);
    for (const Saying& saying : sayings) {
        const auto count = std::count_if(messages.begin(), messages.end(),
                                         [&](const auto& text) { return Says(text, job, saying); });
        EXPECT_GE(count, static_cast<std::ptrdiff_t>(times))
            << saying.Names << ", " << saying.Reason << " in "
            << ::testing::PrintToString(messages);
    }
    EXPECT_EQ(outcome.StatusText, "");
    EXPECT_EQ(outcome.StatusKind, 0);
}

void DoubtTest::ExpectStrict(const std::vector<Saying>& sayings, const std::string& job,
                             const Outcome& outcome) {
    const Texts messages = Said('E');
    ASSERT_EQ(messages.size(), 1U) << ::testing::PrintToString(messages);
    EXPECT_TRUE(std::any_of(sayings.begin(), sayings.end(), [&](const Saying& saying) {
        return Says(messages[0], job, saying);
    })) << messages[0];
    EXPECT_EQ(outcome.StatusText, Cut(messages[0]));
    EXPECT_EQ(outcome.StatusKind, 1);
}
