#pragma once

#include <sys/resource.h>

#include <functional>

#include "GoodDescription.h"
#include "JobRunner.h"

inline constexpr const char* kJobName = "Order7";
inline constexpr const char* kNoSuchFile = "No such file or directory";
/// The content of other people's files among the temporary ones.
inline constexpr const char* kTheirs = "theirs";

/// Edits of the model's output rules.
inline constexpr const char* kRules = R"(CreateFolder="No")";
inline constexpr const char* kElements = R"(<PreviewParam sizeV="0"/>)";
inline const Edit kReversed = {kRules, R"(CreateFolder="No" PrinterDirection="YES")"};
inline const Edit kByLine = {kRules, R"(CreateFolder="No" TypeRead="LINE_BY_LINE")"};
inline const Edit kHeader = {
    kElements, R"(<PreviewParam sizeV="0"/><HeaderParam name="t.txt" output="head.bin"/>)"};
inline const Edit kTicket = {kElements,
                             R"(<PreviewParam sizeV="0"/><JobTicketParam name="t.xml"/>)"};
/// This white treatment is offered, and no other.
Edit White(int type);

/// What an entry of the log has to say.
struct Saying {
    std::string Names;     ///< a file or another name, whole; '|' between alternatives
    std::string Reason{};  ///< the system's text
};
/// Whether the message says it, of that job.
bool Says(const std::string& message, const std::string& job, const Saying& saying);
/// Whether the text has one of the names, and not as a part of another one.
bool HasName(const std::string& text, const std::string& names);

/// What a host orders, and what befalls the job.
struct Order {
    std::vector<Page> Pages{};  ///< none: the fixture's one
    JobChoices Choices{};
    const char* CustomColorMode = nullptr;
    std::string Thumbnail{};
    int32_t PortKind = kFilePort;
    std::filesystem::path Folder{};  ///< empty: the output folder
    int32_t Tiles = 0;
    std::function<void()> Before{};  ///< called when the job's files are written
    rlim_t Room = RLIM_INFINITY;     ///< bytes that a file can hold
    int Steps = 0;                   ///< so many steps come before Midway
    bool IsRowAStep = false;         ///< of these steps
    std::function<void()> Midway{};
};
/// The file or folder is missing, another text, or a folder that cannot be removed.
Order Missing(const std::filesystem::path& path);
Order Written(const std::filesystem::path& path, const std::string& text);
Order Taken(const std::filesystem::path& path);

struct Outcome {
    std::string Answers;  ///< of the steps from Midway on; "-": OpenJob answered 0
    std::string StatusText;
    int32_t StatusKind;
};

/// Whole jobs in both modes, of a model of two inks and white. Its files bear no job's name, so
/// that an entry that names the job says so for itself.
class DoubtTest : public BoundaryTest {
  protected:
    /// Writes the templates of a header and a ticket.
    void SetUp() override;
    /// Colour mode 1 has the inks exchanged, 2 the first one alone.
    void Install(const std::vector<Edit>& edits);

    /// Prints into an empty output folder, with empty temporary files' folder and log. `strict` is
    /// QL_STRICT when the job opens, null for none; another value follows at once. Whatever the job
    /// comes to, nothing temporary is left and nothing is left open.
    Outcome Do(Order order, const char* strict);

    /// The messages of the log's entries of a level, but for the line of a failed step.
    Texts Said(char level) const;
    /// The log says each of the sayings of that job so many times, and no more at level E; the
    /// status text nothing.
    void ExpectSaid(const std::vector<Saying>& sayings, const std::string& job, std::size_t times,
                    const Outcome& outcome);
    /// The log says one of the sayings, once, and so does the status text.
    void ExpectStrict(const std::vector<Saying>& sayings, const std::string& job,
                      const Outcome& outcome);

    std::filesystem::path Union() const { return folder.Temp() / "TempWhiteData"; }
    std::filesystem::path Gathered() const { return folder.Temp() / "channel_data"; }
    std::filesystem::path Installed(const char* name) const {
        return folder.Base() / "OutputDrivers" / name;
    }

    Page page = RandomPage(40, 3, {{"C1"}, {"C2"}}, 1);
};

/// The union of the page's first two inks.
std::string United(const Page& page, bool bottomFirst = false);
