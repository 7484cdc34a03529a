#pragma once

#include <cstddef>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// What `driverhost check` finds. An error is what the driver refuses, and what ruins a print: it
/// comes out other than the file says. A warning is what it ignores or guesses without that.
enum class Severity { kWarning, kError };

/// A place in a text, both from 1; columns count characters.
struct TextPosition {
    std::size_t Line = 1;
    std::size_t Column = 1;
};

struct Finding {
    TextPosition Position;
    Severity Level = Severity::kWarning;
    std::string Text;
};

/// The findings of a run, file by file in the order in which the files were looked at.
class Findings {
  public:
    /// Findings of a file beyond these are counted only.
    static constexpr std::size_t kMostOfAFile = 1000;

    struct File {
        std::string Name;
        std::vector<Finding> List;  ///< by position
    };

    /// Notes that a file is looked at. False when it already was.
    bool BeginFile(const std::string& file);
    /// Whether further findings of the file are counted only; their place is of no interest then.
    bool IsFull(const std::string& file) const;
    void Add(Severity level, const std::string& file, TextPosition at, std::string text);

    /// Whether the text of a listed finding of the file holds `part`; true for a file that is full.
    bool Mentions(const std::string& file, std::string_view part) const;

    const std::vector<File>& Files() const { return files_; }
    std::size_t Errors() const { return errors_; }
    std::size_t Warnings() const { return warnings_; }
    std::size_t LeftOut() const { return leftOut_; }

  private:
    File& FileOf(const std::string& file);

    std::vector<File> files_;
    std::map<std::string, std::size_t> places_;  ///< in `files_`, by name
    std::size_t errors_ = 0;
    std::size_t warnings_ = 0;
    std::size_t leftOut_ = 0;
};

const char* LevelName(Severity level);

/// One line a finding: FILE:LINE:COLUMN: LEVEL: TEXT.
void PrintFindings(const Findings& findings, std::FILE* stream);

/// A text without line ends and other control characters: names in files may hold anything.
std::string OneLine(std::string text);

/// A text from a file in quotes, cut to a readable length.
std::string Quoted(std::string_view text);

/// A text with its letters A to Z in lower case, for names that are the same in any case.
std::string Folded(std::string text);

/// The known name that an unknown one was probably meant to be; "" when none is near.
std::string_view NearestName(std::string_view unknown, const std::vector<std::string_view>& known);

/// ` (did you mean "NAME"?)` for the known name that is nearest to an unknown one; "" when none is
/// near.
std::string DidYouMean(std::string_view unknown, const std::vector<std::string_view>& known);
