#pragma once

#include <cstdint>
#include <string_view>

/// Shows how far a job is: one line that changes for a person at a terminal, one line per page
/// otherwise.
class Progress {
  public:
    /// A quiet one shows nothing.
    Progress(int32_t pageCount, bool quiet);
    /// Leaves no half line behind.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The driver's status text: "Cyan   50%  12%" (kind 1, the last number counts for the page) or
    /// " 50%" (kind 3). `page` counts from 0.
    void Show(int32_t page, int32_t statusKind, std::string_view statusText);
    void PageDone(int32_t page, double seconds);

  private:
    void Clear();

    int32_t pageCount_;
    bool quiet_;
    bool terminal_;
    bool lineOpen_ = false;
};

/// The percentage that a status text ends with; -1 when it has none.
int32_t PercentOf(std::string_view statusText);
