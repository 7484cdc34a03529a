#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// What to run beside this program, and where. No shell is involved: every argument arrives as it
/// stands.
struct ChildProgram {
    std::vector<std::string> Arguments;  ///< the first is the program, looked up in PATH
    std::string WorkFolder;
    std::string OutputFile;  ///< receives standard output and standard error, created anew
    /// Variables that differ from this program's own; an empty value removes one.
    std::vector<std::pair<std::string, std::string>> Environment;
};

/// A running program without input, in a process group of its own, so that an interrupt typed at
/// the terminal reaches only the program that started it. A program still running when the object
/// goes is killed with everything that it started.
class ChildProcess {
  public:
    ChildProcess() = default;
    ~ChildProcess() { Kill(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// False when the program cannot be started.
    [[nodiscard]] bool Launch(const ChildProgram& program);
    /// Never waits.
    bool HasEnded();
    /// Kills the group and waits for its end; nothing when it has ended.
    void Kill();
    /// Exit status of an ended program; 128 and more when a signal ended it.
    int Result() const { return result_; }

  private:
    std::int64_t process_ = 0;  ///< 0: none runs
    int result_ = 0;
};
