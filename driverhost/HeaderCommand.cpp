#include "driverhost/HeaderCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <span>

#include "driverhost/CommandTree.h"
#include "driverhost/HeaderRemarks.h"
#include "driverhost/HostError.h"
#include "driverhost/TemplateOptions.h"
#include "host/FileBytes.h"
#include "plugin/output/HeaderFile.h"

namespace {

struct HeaderOptions : TemplateOptions {
    std::string File;
};

constexpr std::size_t kBytesARow = 8;

HeaderFacts SampleFacts() {
    return {.widthPixels = 1000,
            .heightLines = 2000,
            .channelCount = 4,
            .xResolution = 300,
            .yResolution = 600,
            .bits = 1};
}

/// The keywords and the names of those whose value is the user's or a job's own.
struct Values {
    std::vector<HeaderKeyword> Keywords;
    std::set<std::string, std::less<>> Known;
};

Values ReadValues(const TemplateOptions& options) {
    Values values;
    if (options.Job.empty()) {
        values.Keywords = HeaderKeywords(SampleFacts(), {});
    } else {
        const JobPage page = ReadJobPage(options);
        values.Keywords =
            HeaderKeywords({.widthPixels = static_cast<int32_t>(page.Page.WidthPixels),
                            .heightLines = static_cast<int32_t>(page.Page.Rows),
                            .channelCount = page.ColorantCount,
                            .xResolution = page.Header.XResolutionWhole,
                            .yResolution = page.Header.YResolutionWhole,
                            .bits = page.Page.Bits},
                           page.Model);
    }
    std::vector<std::string_view> names;
    for (const HeaderKeyword& keyword : values.Keywords)
        names.push_back(keyword.Name);
    const auto given = GivenValues(options, names);
    for (HeaderKeyword& keyword : values.Keywords) {
        const auto value = given.find(keyword.Name);
        if (value != given.end()) keyword.Value = WholeNumber(keyword.Name, value->second);
        if (value != given.end() || !options.Job.empty()) values.Known.insert(keyword.Name);
    }
    return values;
}

template <class Number>
std::string Decoded(std::span<const uint8_t> field) {
    Number number = 0;
    std::memcpy(&number, field.data(), sizeof number);
    return fmt::format("{}", number);
}

std::string DecodedText(std::span<const uint8_t> field) {
    std::size_t length = field.size();
    while (length > 0 && field[length - 1] == 0)
        --length;
    std::string text;
    for (const uint8_t byte : field.first(length)) {
        const bool isPlain = byte >= 0x20 && byte < 0x7F;
        text += isPlain ? std::string(1, static_cast<char>(byte)) : fmt::format("\\x{:02X}", byte);
    }
    return '"' + text + '"';
}

/// What a field's bytes say.
std::string ValueOf(std::string_view type, std::span<const uint8_t> field) {
    if (type == "int32") return Decoded<int32_t>(field);
    if (type == "int16") return Decoded<int16_t>(field);
    if (type == "int8") return fmt::format("{}", static_cast<int8_t>(field[0]));
    if (type == "float") return Decoded<float>(field);
    if (type == "double") return Decoded<double>(field);
    return DecodedText(field);
}

std::string HexRow(std::span<const uint8_t> bytes) {
    return fmt::format("{:02X}", fmt::join(bytes, " "));
}

/// The fields of a header with its bytes.
class Dump {
  public:
    Dump(std::string_view text, const TemplateRemarks& remarks, const HeaderExplanation& header)
        : text_(text), remarks_(remarks), header_(header) {}

    /// `bytes` are the header's own or a file's. True when they are what the template gives, as
    /// far as the values are known.
    bool Print(std::span<const uint8_t> bytes, const Values& values, bool isFile) const {
        fmt::print("offset  {:<{}}  value               line  source\n", "bytes",
                   3 * kBytesARow - 1);
        bool isSame = true;
        for (const HeaderLine& line : header_.Fields) {
            const std::span<const uint8_t> due =
                std::span(header_.Bytes).subspan(line.Offset, line.Size);
            if (line.Offset + line.Size > bytes.size()) {
                fmt::print("{:6}  the file ends within this field or before it\n", line.Offset);
                break;
            }
            const std::span<const uint8_t> field = bytes.subspan(line.Offset, line.Size);
            PrintField(line, field);
            const bool differs = isFile && IsKnown(line, values) &&
                                 !std::equal(field.begin(), field.end(), due.begin());
            if (!differs) continue;
            fmt::print("        differs: the template gives {}\n", ValueOf(line.Type, due));
            isSame = false;
        }
        for (std::size_t at = header_.Bytes.size(); at < bytes.size(); at += kBytesARow)
            fmt::print("{:6}  {:<{}}  not the template's\n", at, HexRow(Row(bytes.subspan(at))),
                       3 * kBytesARow - 1);
        return isSame && bytes.size() == header_.Bytes.size();
    }

  private:
    static std::span<const uint8_t> Row(std::span<const uint8_t> bytes) {
        return bytes.first(std::min(kBytesARow, bytes.size()));
    }

    static bool IsKnown(const HeaderLine& line, const Values& values) {
        return !line.Number.starts_with("QL") || values.Known.contains(line.Number);
    }

    std::string_view Source(const HeaderLine& line) const {
        constexpr std::size_t kMostShown = 100;
        return text_.substr(line.Begin, std::min(line.End - line.Begin, kMostShown));
    }

    void PrintField(const HeaderLine& line, std::span<const uint8_t> field) const {
        fmt::print("{:6}  {:<{}}  {:<18}  {:4}  {}\n", line.Offset, HexRow(Row(field)),
                   3 * kBytesARow - 1, ValueOf(line.Type, field), remarks_.At(line.Begin).Line,
                   OneLine(std::string(Source(line))));
        // Of a long text the zeros behind it are not shown.
        std::size_t shown = field.size();
        while (shown > kBytesARow && field[shown - 1] == 0)
            --shown;
        for (std::size_t at = kBytesARow; at < shown; at += kBytesARow)
            fmt::print("{:6}  {}\n", line.Offset + at, HexRow(Row(field.subspan(at))));
    }

    std::string_view text_;
    const TemplateRemarks& remarks_;
    const HeaderExplanation& header_;
};

void PrintValues(const Values& values) {
    std::string text;
    for (const HeaderKeyword& keyword : values.Keywords)
        text += fmt::format("  {} {}{}\n", keyword.Name, std::get<int32_t>(keyword.Value),
                            values.Known.contains(keyword.Name) ? "" : " (sample)");
    fmt::print("{}", text);
}

int ShowHeader(const HeaderOptions& options) {
    const AFilePath path = FindTemplate(options, "HeaderTemplates");
    const Values values = ReadValues(options);
    const std::optional<std::string> text = ReadFileText(path);
    if (!text) throw HostError(kFailed, fmt::format("{} cannot be read", path.fullPath()));
    Findings findings;
    const TemplateRemarks remarks(findings, path.fullPath(), *text);
    const HeaderExplanation header = ExplainHeader(*text, values.Keywords, remarks);
    NoteCut(path, *text, remarks);
    bool isGood = !header.IsMalformed;
    if (isGood && options.File.empty()) {
        fmt::print("{}: {} bytes\n", path.fullPath(), header.Bytes.size());
        PrintValues(values);
        Dump(*text, remarks, header).Print(header.Bytes, values, false);
    } else if (isGood) {
        const std::optional<std::string> file = ReadFileBytes(AFilePath(options.File));
        if (!file) throw HostError(kFailed, fmt::format("{} cannot be read", options.File));
        fmt::print("{}: {} bytes; {} gives {}\n", options.File, file->size(), path.fullPath(),
                   header.Bytes.size());
        const auto* const bytes = reinterpret_cast<const uint8_t*>(file->data());
        isGood = Dump(*text, remarks, header).Print({bytes, file->size()}, values, true);
    }
    PrintFindings(findings, stdout);
    return isGood ? kSuccess : kFailed;
}

}  // namespace

void AddHeaderCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("header", "Show the header that a template gives, byte by byte", ShowHeader);
    AddTemplateOptions(command, options);
    command.add_option("--file", options.File, "A header file to show instead, field by field")
        ->type_name(kFileArgument);
    AddHelp(command,
            "Behind the bytes stands every line that the driver ignores or reads other than it is\n"
            "written. Without --page the values of the keywords are those of a sample page; a\n"
            "job's options are not looked at, its white treatment is the model's own. Of a --file\n"
            "those fields are compared that do not depend on a sample value; the status is 1 when\n"
            "one differs.",
            {"driverhost header FenlandW6.txt",
             "driverhost header FenlandW6.txt --set QL_WIDTH=4096 --set QL_NCOLORS=7",
             "driverhost header FenlandF8.txt --page glass.job",
             "driverhost header FenlandF8.txt --page glass.job --file raw/glass.hdr"});
}
