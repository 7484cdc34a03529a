#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "driverhost/WorkFolder.h"

/// One thing that the driver says beside its answers.
struct DriverWord {
    bool IsWarning = false;  ///< else something failed
    std::string Text;        ///< one line
};

/// Hears what the driver writes into its log and shows in message boxes, so that it reaches the
/// operator as sentences: without the place in the source, and with the names of this system. What
/// the user has sent to a file of their own stays there; of such a log a copy is heard.
class DriverWords {
  public:
    /// From here on. Without `takesMessages` message boxes are shown, as in a session at a window.
    void Listen(bool takesMessages);
    /// What came since the last call, each thing once.
    std::vector<DriverWord> Take();
    /// Says all of it on standard error.
    void SayAll();

  private:
    /// The lines that are added to a file.
    struct Source {
        std::string Path;
        std::uintmax_t Offset = 0;
        std::vector<std::string> NewLines();
    };
    /// Points a variable of the driver to a file of ours, unless it names one.
    std::optional<Source> Point(const char* variable, const char* name);

    std::optional<WorkFolder> folder_;
    std::optional<Source> log_;
    std::optional<Source> messages_;
};

/// One log entry as a sentence; nothing for one that has none: of another level, or a bare mark.
std::optional<DriverWord> WordOfEntry(const std::string& line);
/// Likewise for a message box, a line of JSON.
std::optional<DriverWord> WordOfMessage(const std::string& line);
