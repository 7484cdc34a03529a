#include "driverhost/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string>

#include "driverhost/Speech.h"
#include "platform/Program.h"

namespace {

// Kinds of status texts: a line of the page output, and the plain percentage.
constexpr int32_t kPageLine = 1;
constexpr int32_t kPercentage = 3;

}  // namespace

int32_t PercentOf(std::string_view statusText) {
    const std::size_t sign = statusText.rfind('%');
    if (sign == std::string_view::npos) return -1;
    std::size_t start = sign;
    while (start > 0 && statusText[start - 1] >= '0' && statusText[start - 1] <= '9')
        --start;
    int32_t percent = -1;
    std::from_chars(statusText.data() + start, statusText.data() + sign, percent);
    return std::clamp(percent, -1, 100);
}

Progress::Progress(int32_t pageCount, bool quiet)
    : pageCount_(pageCount), quiet_(quiet), terminal_(!quiet && IsTerminal(stdout)) {}

Progress::~Progress() {
    Clear();
}

void Progress::Show(int32_t page, int32_t statusKind, std::string_view statusText) {
    if (!terminal_ || (statusKind != kPageLine && statusKind != kPercentage)) return;
    const int32_t percent = PercentOf(statusText);
    if (percent < 0) return;
    constexpr int32_t kWidth = 40;
    constexpr std::size_t kMostText = 40;
    const std::size_t filled = static_cast<std::size_t>(percent * kWidth / 100);
    const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '-');
    Say("\r[{}] page {} of {}  {:<{}}", bar, page + 1, pageCount_, statusText.substr(0, kMostText),
        kMostText);
    std::fflush(stdout);
    lineOpen_ = true;
}

void Progress::PageDone(int32_t page, double seconds) {
    if (quiet_) return;
    Clear();
    Say("page {} of {} written in {:.2f} s\n", page + 1, pageCount_, seconds);
    std::fflush(stdout);
}

void Progress::Clear() {
    if (!lineOpen_) return;
    Say("\r{:100}\r", "");
    lineOpen_ = false;
}
