#include "driverhost/PdfPages.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include "driverhost/HostError.h"

namespace {

constexpr double kPointsPerInch = 72;

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::optional<double> NumberAt(std::string_view text) {
    text = Trimmed(text);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::optional<double> NumberAfter(std::string_view line, std::string_view label) {
    const std::size_t at = line.find(label);
    if (at == std::string_view::npos) return std::nullopt;
    return NumberAt(line.substr(at + label.size()));
}

/// Left, bottom, right, top.
using Box = std::array<double, 4>;

std::optional<Box> BoxAfter(std::string_view line, std::string_view label) {
    const std::size_t at = line.find(label);
    if (at == std::string_view::npos) return std::nullopt;
    std::string_view rest = line.substr(at + label.size());
    const std::size_t open = rest.find('[');
    if (open == std::string_view::npos) return std::nullopt;
    rest = rest.substr(open + 1);
    Box box = {};
    for (double& side : box) {
        rest = rest.substr(std::min(rest.find_first_not_of(' '), rest.size()));
        const std::optional<double> value = NumberAt(rest);
        if (!value) return std::nullopt;
        side = *value;
        rest = rest.substr(std::min(rest.find_first_of(" ]"), rest.size()));
    }
    if (box[0] > box[2]) std::swap(box[0], box[2]);
    if (box[1] > box[3]) std::swap(box[1], box[3]);
    return box;
}

/// "Page 2 UserUnit: 2.0 MediaBox: [..] CropBox: [..] Rotate = 90"
PdfPage PageOf(std::string_view line, std::size_t number) {
    std::optional<Box> box = BoxAfter(line, "MediaBox:");
    if (const std::optional<Box> crop = BoxAfter(line, "CropBox:"); box && crop) {
        const Box visible = {std::max((*box)[0], (*crop)[0]), std::max((*box)[1], (*crop)[1]),
                             std::min((*box)[2], (*crop)[2]), std::min((*box)[3], (*crop)[3])};
        if (visible[0] < visible[2] && visible[1] < visible[3]) box = visible;
    }
    const double unit = NumberAfter(line, "UserUnit:").value_or(1);
    PdfPage page;
    if (box) {
        page.WidthPoints = ((*box)[2] - (*box)[0]) * unit;
        page.HeightPoints = ((*box)[3] - (*box)[1]) * unit;
    }
    if (!(page.WidthPoints > 0 && page.HeightPoints > 0))
        throw HostError(kFailed, fmt::format("page {} of the PDF has no size", number));
    const double turn = NumberAfter(line, "Rotate =").value_or(0);
    if (std::fabs(std::fmod(turn, 180)) == 90) std::swap(page.WidthPoints, page.HeightPoints);
    return page;
}

/// The name between the first and the last quote of a line that holds nothing else.
std::optional<std::string> QuotedName(std::string_view line) {
    line = Trimmed(line);
    if (line.size() < 3 || line.front() != '\'' || line.back() != '\'') return std::nullopt;
    return std::string(line.substr(1, line.size() - 2));
}

std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

}  // namespace

std::vector<PdfPage> ParsePageReport(std::string_view report) {
    if (report.find("requires a password") != std::string_view::npos)
        throw HostError(kFailed, "the PDF is encrypted and asks for a password");
    std::vector<PdfPage> pages;
    double expected = 0;
    bool inSpots = false;
    while (!report.empty()) {
        const std::string_view line = TakeLine(report);
        if (const std::optional<double> count = NumberAfter(line, "File has "); count && !expected)
            expected = *count;
        const std::string pageLabel = fmt::format("Page {}", pages.size() + 1);
        if (line == pageLabel || line.starts_with(pageLabel + ' ')) {
            pages.push_back(PageOf(line, pages.size() + 1));
            inSpots = false;
        } else if (Trimmed(line) == "Page Spot colors:") {
            inSpots = !pages.empty();
        } else if (inSpots) {
            const std::optional<std::string> name = QuotedName(line);
            inSpots = name.has_value();
            if (name) pages.back().Spots.push_back(*name);
        }
    }
    if (expected < 1 || pages.empty()) throw HostError(kFailed, "the PDF has no pages");
    if (static_cast<double>(pages.size()) != expected)
        throw HostError(kFailed, fmt::format("the PDF is damaged: of its {} pages only {} can be "
                                             "read",
                                             expected, pages.size()));
    return pages;
}

int64_t PixelsOf(double points, double dotsPerInch) {
    const double pixels = std::floor(points * dotsPerInch / kPointsPerInch + 0.5);
    constexpr double kMost = 1e15;  // far beyond any page, far below what int64_t holds
    return static_cast<int64_t>(std::clamp(pixels, 0.0, kMost));
}
