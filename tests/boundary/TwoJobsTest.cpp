// Temporary files of a job beside those of others: two jobs at once, leftovers, links, other
// people's files of the same names, and what stays when a job ends early.

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "DoubtTest.h"
#include "OpenFiles.h"
#include "SystemStandIns.h"

namespace {

namespace fs = std::filesystem;

constexpr int64_t kRowAStep = 201;  // milliseconds between two looks at the clock

class TwoJobsTest : public DoubtTest {
  protected:
    /// A job of its own driver, into a folder of its name.
    struct Printing {
        std::string Name;
        int White;
        Page Ordered;
        std::unique_ptr<Driver> Own{};
        std::unique_ptr<Job> Current{};
    };
    void Start(Printing& printing, std::vector<Edit> edits, bool isOverOld) {
        edits.push_back(White(printing.White));
        Install(edits);
        printing.Own = std::move(driver);
        const fs::path jobFile = folder.Jobs() / printing.Name;
        WriteText(jobFile, JobFileBytes());
        WriteContainer(jobFile.string() + ".pages.tif", {printing.Ordered});
        const fs::path out = folder.Out() / printing.Name;
        fs::create_directory(out);
        if (isOverOld) {
            WriteText(out / "C1.raw", "old");
            WriteText(out / "C2.raw", "old");
        }
        printing.Current = std::make_unique<Job>(*printing.Own, jobFile);
        EXPECT_EQ(printing.Current->Open() + printing.Current->Port(out), 2);
    }
    void ExpectPrinted(const Printing& printing, bool bottomFirst) {
        const auto& [name, type, printed, own, job] = printing;
        std::string white = United(printed, bottomFirst);
        for (char& byte : white)
            byte = static_cast<char>(type == 1 ? ~byte : byte);
        EXPECT_EQ(Listing(folder.Out() / name), (Texts{"C1.raw", "C2.raw", "W.raw"}));
        EXPECT_TRUE(Output(name + "/C1.raw") == ChannelBytes(printed, "C1", bottomFirst)) << name;
        EXPECT_TRUE(Output(name + "/C2.raw") == ChannelBytes(printed, "C2", bottomFirst)) << name;
        EXPECT_TRUE(Output(name + "/W.raw") == white) << name;
    }
    /// A step if there is one to take; false when it fails.
    static bool Advance(Printing& printing) {
        return printing.Current->HasEnded() || printing.Current->Step() == 1;
    }
};

/// The turns of two processes, a byte each.
bool Pass(int socket) {
    return send(socket, "x", 1, MSG_NOSIGNAL) == 1;
}
bool Await(int socket) {
    char turn = 0;
    return recv(socket, &turn, 1, 0) == 1;
}

TEST_F(TwoJobsTest, AtOnce) {
    const StandIn clock(clockStepMs, kRowAStep);
    const std::vector<Edit> allRules[] = {{}, {kReversed}, {kByLine}, {kReversed, kByLine}};
    for (int way = 0; way < 16; ++way) {
        const std::vector<Edit>& rules = allRules[way % 4];
        const bool isOverOld = (way & 4) != 0;
        const bool inTwoProcesses = (way & 8) != 0;
        SCOPED_TRACE(way);
        EmptyOutputFolder();
        driver.reset();
        Printing a = {"a", 1, RandomPage(40, 9, {{"C1"}, {"C2"}}, 1)};
        Printing b = {"b", 2, RandomPage(100, 14, {{"C1"}, {"C2"}}, 2)};
        if (inTwoProcesses) {
            int sockets[2];
            ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets), 0);
            const pid_t child = fork();
            if (child == 0) {
                close(sockets[0]);
                Start(b, rules, isOverOld);
                bool isFine = Pass(sockets[1]);
                while (isFine && !b.Current->HasEnded())
                    isFine = Await(sockets[1]) && Advance(b) && Pass(sockets[1]);
                _exit(isFine ? 0 : 1);
            }
            close(sockets[1]);
            EXPECT_TRUE(Await(sockets[0]));
            Start(a, rules, isOverOld);
            while (Pass(sockets[0]) && Await(sockets[0]))
                ASSERT_TRUE(Advance(a));
            EXPECT_TRUE(a.Current->HasEnded()) << "it is the shorter one";
            close(sockets[0]);
            int status = 0;
            EXPECT_EQ(waitpid(child, &status, 0), child);
            EXPECT_EQ(status, 0);
        } else {
            Start(a, rules, isOverOld);
            Start(b, rules, isOverOld);
            while (!a.Current->HasEnded() || !b.Current->HasEnded())
                ASSERT_TRUE(Advance(a) && Advance(b));
        }
        ExpectPrinted(a, way % 2 == 1);
        ExpectPrinted(b, way % 2 == 1);
        EXPECT_EQ(Listing(folder.Temp()), Texts{});
    }
    EXPECT_EQ(Said('E'), Texts{});
}

// What stands under a temporary file's name is never written to, nor printed.
TEST_F(TwoJobsTest, Leftovers) {
    const fs::path target = folder.Root() / "target";
    const fs::path none = folder.Root() / "none";
    const fs::path names[] = {Gathered(), Union()};
    const std::function<void(const fs::path&)> kinds[] = {
        [](const fs::path& path) { WriteText(path, std::string(9999, 'x')); },
        [&](const fs::path& path) { fs::create_symlink(target, path); },
        [&](const fs::path& path) { fs::create_symlink(none, path); },
        [&](const fs::path& path) { fs::create_hard_link(target, path); },
    };
    WriteText(target, "kept");
    for (const fs::path& path : names) {
        for (const auto& leave : kinds) {
            Install({White(2), kReversed});
            Order order;
            order.Before = [&] { leave(path); };
            EXPECT_EQ(Do(order, "1").Answers, "1111") << path;
            EXPECT_EQ(Output("C1.raw"), ChannelBytes(page, "C1", true));
            EXPECT_EQ(Output("W.raw"), United(page, true));
            EXPECT_EQ(ReadText(target), "kept");
            EXPECT_EQ(fs::hard_link_count(target), 1U);
            EXPECT_FALSE(fs::exists(none));
        }
    }
}

// Another job has taken the name in the meantime: its file stays, and this job's data are its own.
TEST_F(TwoJobsTest, AnothersFileUnderTheName) {
    for (const fs::path& path : {Gathered(), Union()}) {
        SCOPED_TRACE(path);
        Install({White(2), kReversed});
        Order order = {.Steps = 3, .IsRowAStep = true};
        order.Midway = [&] {
            EXPECT_TRUE(fs::remove(path));
            WriteText(path, kTheirs);
        };
        EXPECT_TRUE(IsPrinted(Do(order, nullptr).Answers));
        // The next channel's lines take the name again.
        EXPECT_EQ(ReadText(path), path == Union() ? kTheirs : "");
        fs::remove(path);
        EXPECT_EQ(Output("C1.raw"), ChannelBytes(page, "C1", true));
        EXPECT_EQ(Output("C2.raw"), ChannelBytes(page, "C2", true));
        EXPECT_EQ(Output("W.raw"), United(page, true));
    }
}

// What stands ready for the white file goes with the page that prints it, and with no other.
TEST_F(TwoJobsTest, ReadyWhite) {
    const StandIn clock(clockStepMs, kRowAStep);
    const Page noFirst = RandomPage(40, 3, {{"Gold"}, {"C1"}, {"C2"}}, 1);
    const struct {
        int Type;
        int Steps;  ///< before the host gives the job up; -1: never
        bool Stays;
    } rows[] = {{4, 0, true},   {4, 1, false}, {6, 5, false}, {1, 0, true},  {2, 2, false},
                {2, -1, false}, {0, -1, true}, {3, -1, true}, {5, -1, true}, {3, 5, true}};
    for (const auto& [type, steps, stays] : rows) {
        for (const Page& printed : {page, noFirst}) {
            SCOPED_TRACE(fmt::format("type {}, {} steps", type, steps));
            EmptyOutputFolder();
            Install({White(type)});
            WriteText(Union(), "ready");
            Job job = StartJob({printed});
            EXPECT_TRUE(steps >= 0 || IsPrinted(job.Run()));
            for (int step = 0; step < steps; ++step)
                EXPECT_EQ(job.Step(), 1);
            EXPECT_TRUE(steps < 0 || driver->Call(kAbortJob) == 1);
            EXPECT_EQ(fs::exists(Union()), stays);
            EXPECT_EQ(ReadText(Union()), stays ? "ready" : "");
            if (type == 2 && steps < 0) {
                EXPECT_EQ(Output("W.raw"), printed.Separations.size() == 2 ? United(page) : "");
            }
        }
    }
    Install({White(4)});  // a step that fails before the page has read it
    Order order;
    order.Before = [this] {
        fs::create_directory(folder.Out() / "C2.raw");
        WriteText(Union(), "ready");
    };
    EXPECT_EQ(Do(order, nullptr).Answers, "10");
}

// Given up by the host, by an opening that fails or with the driver, wherever it was.
TEST_F(TwoJobsTest, AnEarlyEndLeavesNothing) {
    const StandIn clock(clockStepMs, kRowAStep);
    for (const Edit& order : {White(1), kByLine}) {
        for (int way = 0; way < 6; ++way) {
            bool hasEnded = false;
            for (int steps = 0; !hasEnded; ++steps) {
                SCOPED_TRACE(fmt::format("way {}, {} steps", way, steps));
                EmptyOutputFolder();
                if (way % 2 == 1) WriteText(folder.Out() / "C1.raw", "old");
                driver.reset();
                const Texts before = OpenFiles();
                Install({order, kReversed, White(1)});
                Job job = StartJob({page});
                for (int step = 0; step < steps; ++step)
                    ASSERT_EQ(job.Step(), 1);
                hasEnded = job.HasEnded();
                if (way / 2 == 0) driver->Call(kAbortJob);
                if (way / 2 == 1) Job(*driver, folder.Jobs()).Open();
                if (way / 2 == 2) driver.reset();
                EXPECT_EQ(OpenFiles(), before);
                EXPECT_EQ(Listing(folder.Temp()), Texts{});
            }
        }
    }
}

// Headers and tickets come by a file beside them, which a process that is gone may have left.
TEST_F(TwoJobsTest, FilesBesideHeadersAndTickets) {
    const pid_t gone = fork();
    if (gone == 0) _exit(0);
    ASSERT_EQ(waitpid(gone, nullptr, 0), gone);
    Install({kHeader, kTicket});
    const fs::path target = folder.Root() / "target";
    WriteText(target, "kept");
    const auto print = [this] {
        EXPECT_TRUE(Print({page}));
        EXPECT_EQ(Output("head.bin"), "\x07");
        EXPECT_EQ(Output("t.xml"), "[]");
    };
    for (const std::string name : {"head.bin", "t.xml"}) {
        EmptyOutputFolder();
        Texts staying = {fmt::format("{}.{}.1.tmp", name, getppid()),
                         fmt::format("{}.{}.99999.tmp", name, getpid()),
                         fmt::format("other{}.{}.1.tmp", name, gone),
                         fmt::format("{}.{}.tmp", name, gone), name + ".x.1.tmp"};
        for (const std::string& other : staying)
            WriteText(folder.Out() / other, kTheirs);
        for (const int number : {1, 20})
            WriteText(folder.Out() / fmt::format("{}.{}.{}.tmp", name, gone, number), "");
        print();
        staying.insert(staying.end(), {"C1.raw", "C2.raw", "head.bin", "t.xml"});
        std::sort(staying.begin(), staying.end());
        EXPECT_EQ(Listing(folder.Out()), staying);
        EmptyOutputFolder();
        fs::create_symlink(target, folder.Out() / name);
        print();
        EXPECT_FALSE(fs::is_symlink(folder.Out() / name));
        EXPECT_EQ(ReadText(target), "kept");
    }
}

}  // namespace
