// The examples of every command's --help, run as a user would type them.

#include <sstream>

#include "DriverHostFixture.h"

namespace {

/// What the examples find: artwork, jobs and what they print. A command whose examples need more
/// adds it here.
constexpr char kPrepare[] =
    "mkdir prepared && cd prepared && ln -s \"$host\" \"$tools/driverhost\""
    " && cp ../a.pdf poster.pdf && touch glass.bmp"
    " && gs -q -dBATCH -dNOPAUSE -r100 -sDEVICE=png16m -sOutputFile=photo.png poster.pdf"
    " && driverhost make-job poster.pdf --model 'Fenland R4' -o poster.job"
    " && driverhost make-job poster.pdf --model 'Fenland F8' -o glass.job"
    " && driverhost make-job poster.pdf --model 'Fenland W6' -o white.job"
    " && printf 'select 0\\npress 1\\n' > answers.txt"
    " && driverhost run poster.job --out printed && cp -R printed reprinted"
    " && printf X | dd of=reprinted/poster/poster_C.tif bs=1 seek=2000 conv=notrunc"
    " && driverhost run glass.job --out raw --name glass"
    " && cp -R '" MODELS_FOLDER
    "' models"
    " && mkdir -p models/Temp models/temp 'models/Jobs and Settings/OptionsDrivers'";

std::vector<std::string> LinesAfter(const std::string& help, const std::string& heading) {
    std::istringstream text(help);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(text, line) && !line.starts_with(heading)) {
    }
    while (std::getline(text, line) && line.starts_with("  "))
        lines.push_back(line);
    return lines;
}

class Examples : public DriverHost {
  protected:
    std::string Help(const std::string& command) const {
        const Outcome help = Shell("\"$host\" " + command + " --help");
        EXPECT_EQ(help.Status, 0) << help.Output;
        return help.Output;
    }

    /// The commands below `command` that do something themselves, "" being the program.
    void ListCommands(const std::string& command, std::vector<std::string>& commands) const {
        const std::vector<std::string> below = LinesAfter(Help(command), "Subcommands:");
        for (const std::string& line : below) {
            std::istringstream words(line);
            std::string name;
            // What a long name leaves no room for stands on the next line, far to the right.
            if (line.size() > 2 && line[2] != ' ' && words >> name)
                ListCommands(command + ' ' + name, commands);
        }
        if (below.empty()) commands.push_back(command);
    }

    /// Runs a command's examples one after the other in a copy of the prepared folder.
    void RunExamples(const std::string& command) const {
        const std::vector<std::string> lines = LinesAfter(Help(command), "Example");
        EXPECT_FALSE(lines.empty()) << "no example for" << command;
        const std::string program = "driverhost" + command;
        ASSERT_EQ(Shell("rm -rf work && cp -R prepared work").Status, 0);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            std::string example = lines[i].substr(2);
            while (example.ends_with('\\') && i + 1 < lines.size())
                example += '\n' + lines[++i];
            EXPECT_TRUE(Contains(example, program)) << example;
            const std::size_t status = example.find("# status ");
            const int expected =
                status == std::string::npos ? 0 : std::stoi(example.substr(status + 9));
            const Outcome run = Shell("cd work && export QL_BASE_FOLDER=$PWD/models && " + example);
            EXPECT_EQ(run.Status, expected) << example << '\n' << run.Output;
        }
    }
};

TEST_F(Examples, DoWhatTheySay) {
    Write("a.pdf", Pdf({kQuarters}));
    const Outcome prepared = Shell("tools='" + tools_.Path().string() + "'; " + kPrepare);
    ASSERT_EQ(prepared.Status, 0) << prepared.Output;
    std::vector<std::string> commands;
    ListCommands("", commands);
    EXPECT_GE(commands.size(), 3U);
    for (const std::string& command : commands)
        RunExamples(command);
}

}  // namespace
