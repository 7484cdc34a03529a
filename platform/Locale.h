#pragma once

#include <memory>

/// Gives the calling thread the "C" locale's numbers for its own lifetime, then its former locale
/// again. The locale of other threads and of the process is not touched. When the system cannot
/// give the thread a locale of its own, the former one stays.
class ThreadCNumbers {
  public:
    ThreadCNumbers();
    ~ThreadCNumbers();
    ThreadCNumbers(const ThreadCNumbers&) = delete;
    ThreadCNumbers& operator=(const ThreadCNumbers&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state_;
};
