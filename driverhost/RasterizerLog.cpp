#include "driverhost/RasterizerLog.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

bool Holds(std::string_view line, std::string_view part) {
    return line.find(part) != std::string_view::npos;
}

bool IsError(std::string_view line) {
    return Holds(line, "Error") || Holds(line, "rror: ");
}

/// Printable, in one line, of a length that a person reads.
std::string Readable(std::string_view line) {
    constexpr std::size_t kMost = 160;
    line.remove_prefix(std::min(line.find_first_not_of("* \t"), line.size()));
    std::string text(line.substr(0, kMost));
    std::replace_if(
        text.begin(), text.end(), [](char character) { return character >= 0 && character < ' '; },
        '?');
    return text;
}

/// "Loading font NAME (or substitute) from PATH": what is drawn where a page brings no font along.
std::string MissingFont(std::string_view line) {
    constexpr std::string_view kHead = "Loading font ";
    constexpr std::string_view kMiddle = " (or substitute) from ";
    const std::size_t middle = line.find(kMiddle);
    if (!line.starts_with(kHead) || middle == std::string_view::npos) return "";
    const std::string_view font = line.substr(kHead.size(), middle - kHead.size());
    const std::string_view path = line.substr(middle + kMiddle.size());
    return fmt::format("the font {} is not embedded; {} is drawn in its place", font,
                       path.substr(path.rfind('/') + 1));
}

/// "Loading NAME font from PATH... ": what a program gets that asks for a font and brings none.
std::string InstalledFont(std::string_view line) {
    constexpr std::string_view kHead = "Loading ";
    const std::size_t end = line.find(" font from ");
    if (!line.starts_with(kHead) || end == std::string_view::npos) return "";
    return fmt::format("the program brings no font of its own where {} is drawn",
                       line.substr(kHead.size(), end - kHead.size()));
}

/// Lines that every run writes, and the frame of a list of faults.
bool IsUsual(std::string_view line) {
    constexpr std::string_view kStarts[] = {
        "GPL Ghostscript",           "Copyright (C)",
        "This software is supplied", "see the file COPYING",
        "Processing pages",          "Page ",
        "Querying operating system", "Scanning ",
        "The following errors were", "The following warnings were"};
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) return true;
    const auto starts = [line](std::string_view start) { return line.starts_with(start); };
    const std::size_t first = line.find_first_not_of(' ');
    const bool isFrame =
        line.substr(first).starts_with("****") && !IsError(line) && !Holds(line, "Warning");
    return isFrame || line.substr(first).starts_with(">>>>") ||
           (std::any_of(std::begin(kStarts), std::end(kStarts), starts) && !IsError(line));
}

/// Goes through a log line by line: `visit(line, isListed)`, where a list of faults holds the line
/// or not.
template <class Visit>
void ForEachLine(std::string_view log, Visit visit) {
    bool inList = false;
    while (!log.empty()) {
        const std::size_t end = std::min(log.find('\n'), log.size());
        const std::string_view line = log.substr(0, end);
        log.remove_prefix(std::min(end + 1, log.size()));
        visit(line, inList && line.starts_with('\t'));
        inList =
            Holds(line, "were encountered at least once") || (inList && line.starts_with('\t'));
    }
}

bool Complains(std::string_view line, RasterizerRun run) {
    switch (run) {
        case RasterizerRun::kProgram:
            return IsError(line) || Holds(line, "Substituting") || Holds(line, "Warning");
        case RasterizerRun::kPageReport:
            return false;  // its lines are the document's own texts
        case RasterizerRun::kPages:
            break;
    }
    return !IsUsual(line);
}

}  // namespace

std::vector<std::string> ComplaintsIn(std::string_view log, RasterizerRun run) {
    std::vector<std::string> complaints;
    ForEachLine(log, [&](std::string_view line, bool isListed) {
        std::string text = run == RasterizerRun::kPages     ? MissingFont(line)
                           : run == RasterizerRun::kProgram ? InstalledFont(line)
                                                            : "";
        if (text.empty() && !isListed && !Complains(line, run)) return;
        text = text.empty() ? "Ghostscript: " + Readable(line) : Readable(text);
        if (std::find(complaints.begin(), complaints.end(), text) == complaints.end())
            complaints.push_back(std::move(text));
    });
    return complaints;
}

std::string FailureIn(std::string_view log) {
    std::string reason;
    ForEachLine(log, [&](std::string_view line, bool isListed) {
        if (reason.empty() && (isListed || IsError(line))) reason = Readable(line);
    });
    return reason.empty() ? "no reason given" : reason;
}
