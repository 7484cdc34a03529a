// What is made of the tree of commands: the shell completion and the manual page; and the list of
// models that both the user and the completion ask for.

#include <nlohmann/json.hpp>

#include "DriverHostFixture.h"

namespace {

TEST_F(DriverHost, CompletesCommandsOptionsAndWhatTheyTake) {
    const Outcome script = Shell(
        "\"$host\" completion bash > driverhost.bash && "
        "bash -n driverhost.bash");
    ASSERT_EQ(script.Status, 0) << script.Output;
    const std::pair<const char*, const char*> cases[] = {
        {"ca", "<capabilities>"},
        {"--base models insp", "<inspect>"},
        {"run --one", "<--one-folder>"},
        {"run --ba", "<--base>"},
        {"run job --out ''", "dirnames"},
        {"run job --out = ''", "dirnames"},
        {"run ''", "default"},
        {"run job --name ''", ""},
        {"--base ''", "dirnames"},
        {"diff one ''", "default"},
        {"completion ''", "<bash>"},
        {"completion bash ''", ""},
        {"capabilities 'Fenland\\ F'", "<Fenland\\ F8>"},
        {"make-job a.pdf --model '\"Fenland F'", "<Fenland F8>"},
        {"capabilities 'Fenland\\ R4' --j", "<--json>"},
    };
    for (const auto& [words, expected] : cases) {
        // As the shell calls it; it tells compopt the kind of file that it completes itself.
        const Outcome completed = RunProgram(
            {"bash", "-c",
             fmt::format(
                 "source driverhost.bash; compopt() {{ printf %s \"$2\"; }}\n"
                 "COMP_WORDS=('{}' {}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); _driverhost\n"
                 "for word in \"${{COMPREPLY[@]}}\"; do printf '<%s>' \"$word\"; done",
                 DRIVERHOST, words)});
        EXPECT_EQ(completed.Output, expected) << words;
    }
}

TEST_F(DriverHost, ListsTheModelsThatTheModelListReaches) {
    fs::create_directories(Path("base/OutputDrivers"));
    fs::copy(MODELS_FOLDER "/OutputDrivers/FenlandF8.xml", Path("base/OutputDrivers/F.xml"));
    const Outcome empty = Host({"--base", "base", "models"});
    EXPECT_EQ(empty.Status, 1);
    EXPECT_TRUE(Contains(empty.Output, "cannot read the model list")) << empty.Output;
    Write("base/OutputDrivers/G.xml",
          "<D><ModelList><M Name='Gable 2'/><M/><M Name='Gable 1'/></ModelList></D>");
    // A family, an entry that no name reaches, a model without output rules, a missing description.
    Write("base/OutputDrivers/ZeComFile.xml",
          "<L><M Name='Gable' XMLFile='G.xml'/><M Name='Gable 1' XMLFile='F.xml'/>"
          "<M Name='Plain' XMLFile='F.xml'/><M Name='Lost' XMLFile='../x.xml'/></L>");
    const Outcome names = Host({"--base", "base", "models", "--names"});
    EXPECT_EQ(names.Output, "Gable 2\nGable 1\nPlain\nLost\n");
    EXPECT_EQ(names.Status, 0);

    const Outcome listed = Shell("\"$host\" --base base models --json 2>/dev/null");
    EXPECT_EQ(listed.Status, 1) << listed.Output;
    const auto models = nlohmann::json::parse(listed.Output);
    ASSERT_EQ(models.size(), 4U);
    EXPECT_TRUE(models[0].contains("error"));
    EXPECT_EQ(models[2]["mostInks"], 8);
    EXPECT_EQ(models[2]["media"], 4);
    EXPECT_TRUE(models[3].contains("error"));
}

}  // namespace
