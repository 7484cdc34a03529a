#pragma once

#include <stdexcept>
#include <string>

/// What the program answers to the shell.
enum ExitStatus : int {
    kSuccess = 0,
    kFailed = 1,      ///< the command could not be carried out
    kUsage = 2,       ///< the command line asks for what is unknown or not allowed
    kIncomplete = 3,  ///< files or channels that a job wrote are missing or short
    kAborted = 130,   ///< interrupted, as a shell answers for Ctrl-C
};

/// Ends a command with one line on standard error.
class HostError : public std::runtime_error {
  public:
    HostError(ExitStatus status, const std::string& message)
        : std::runtime_error(message), status_(status) {}
    ExitStatus Status() const { return status_; }

  private:
    ExitStatus status_;
};
