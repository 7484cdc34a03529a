#include "driverhost/HeaderRemarks.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <string>
#include <system_error>

#include "host/Numbers.h"
#include "host/Text.h"

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool IsDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsFraction(std::string_view text) {
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec != std::errc::invalid_argument && result.ptr == text.data() + text.size();
}

bool IsWholeType(std::string_view type) {
    return type.starts_with("int");
}

/// Gathers lines and remarks as the reader goes through the template.
class Explainer final : public HeaderLineListener {
  public:
    Explainer(std::string_view text, const std::vector<HeaderKeyword>& keywords,
              const TemplateRemarks& remarks, HeaderExplanation& out)
        : text_(text), remarks_(remarks), out_(out) {
        for (const HeaderKeyword& keyword : keywords)
            names_.push_back(keyword.Name);
    }

    void OnLine(const HeaderLine& line) override {
        NoteLostCharacter(line);
        switch (line.Result) {
            case HeaderLineResult::kField:
                out_.Fields.push_back(line);
                return line.Type == "char" ? ExplainText(line) : ExplainNumber(line);
            case HeaderLineResult::kEmpty:
                return;
            case HeaderLineResult::kNoComma:
                return Warn(line.Begin,
                            "no comma: the line is ignored; a comment begins with //ql");
            case HeaderLineResult::kUnknownType:
                return ExplainType(line);
            case HeaderLineResult::kUnknownKeyword:
                return ExplainKeyword(line);
            case HeaderLineResult::kNoCharSize:
                return Fail(line.ValueBegin, "char without ']': " + Moved());
            case HeaderLineResult::kBadCharSize:
                return Fail(line.ValueBegin, "the size is not from 1 to 600: " + Moved());
            case HeaderLineResult::kMalformed:
                return Fail(line.ValueBegin, "char without a size before ']': the job fails");
            case HeaderLineResult::kDoesNotFit:
                return Fail(line.Begin,
                            fmt::format("the field does not fit: the header has room for {} bytes, "
                                        "and ends here with {}",
                                        kMostHeaderBytes, line.Offset));
        }
    }

    void Finish() {
        if (lostLines_ > 0)
            Fail(lostPlace_,
                 fmt::format(
                     "the line ends with LF where CR LF is due: its last character is "
                     "lost{}",
                     lostLines_ == 1 ? "" : fmt::format(", as in {} lines in all", lostLines_)));
        if (out_.Bytes.empty() && !out_.IsMalformed)
            Warn(0, "no line gives a field: no header is written");
    }

  private:
    void Fail(std::size_t offset, std::string text) const {
        remarks_.Error(offset, std::move(text));
    }
    void Warn(std::size_t offset, std::string text) const {
        remarks_.Warning(offset, std::move(text));
    }
    static std::string Moved() { return "the line is ignored, and the fields behind it move up"; }
    static std::size_t OffsetOf(const HeaderLine& line, std::string_view part) {
        return line.ValueBegin + static_cast<std::size_t>(part.data() - line.Value.data());
    }

    /// The character before an LF goes with it; a CR does no harm, nor what a comment loses.
    void NoteLostCharacter(const HeaderLine& line) {
        const bool loses = line.End + 1 < text_.size() && text_[line.End + 1] == '\n' &&
                           text_[line.End] != '\r' && text_[line.End] != '\n';
        const std::string_view kept = text_.substr(line.Begin, line.End - line.Begin);
        if (!loses || kept.find("//ql") != std::string_view::npos) return;
        if (lostLines_++ == 0) lostPlace_ = line.End;
    }

    void ExplainType(const HeaderLine& line) {
        std::string_view type = text_.substr(line.Begin, line.ValueBegin - 1 - line.Begin);
        if (line.Begin == 0 && type.starts_with(kByteOrderMark))
            return Fail(0, "a byte order mark stands before the type: " + Moved());
        const std::string_view word = Trimmed(type);
        const bool isWord = std::find(types_.begin(), types_.end(), word) != types_.end();
        if (isWord) return Fail(line.Begin, "a blank stands before the type: " + Moved());
        const std::string meant = DidYouMean(word, types_);
        if (meant.empty()) return Warn(line.Begin, "no type before the comma: the line is ignored");
        Fail(line.Begin, fmt::format("no type {}{}: {}", Quoted(word), meant, Moved()));
    }

    void ExplainKeyword(const HeaderLine& line) {
        const std::string_view name = line.Type == "char" ? line.Content : line.Number;
        const auto isName = [&](std::string_view known) { return known == Trimmed(name); };
        std::string why = DidYouMean(name, names_);
        if (std::any_of(names_.begin(), names_.end(), isName))
            why = ": blanks belong to a name";
        else if (name.find_first_of("-/*") != std::string_view::npos)
            why = ": a value has one modifier only";
        Fail(OffsetOf(line, name), fmt::format("no keyword {}{}; {}", Quoted(name), why, Moved()));
    }

    void ExplainText(const HeaderLine& line) {
        const std::string_view size = line.Value.substr(0, line.Value.find(']'));
        if (!IsDigits(Trimmed(size.substr(1))) || size.front() != '[')
            Warn(line.ValueBegin,
                 fmt::format("the size {}] is read as [{}]", Quoted(size), line.Size));
        const std::size_t place = OffsetOf(line, line.Content);
        if (line.Content.starts_with("0x") || line.Content.starts_with("QL"))
            Warn(place, fmt::format("{} is no text: {} zeros are stored", Quoted(line.Content),
                                    line.Size));
        else if (line.Content.size() > line.Size)
            Warn(place, fmt::format("the text has {} bytes: {} of them are stored",
                                    line.Content.size(), line.Size));
        else if (line.Content.ends_with(' ') && place + line.Content.size() < line.End)
            Warn(place + line.Content.size() - 1,
                 "the blanks between the text and the comment are stored, too");
    }

    void ExplainNumber(const HeaderLine& line) {
        const std::string_view type =
            Trimmed(text_.substr(line.Begin, line.ValueBegin - 1 - line.Begin));
        if (type != line.Type)
            Warn(line.Begin, fmt::format("the type {} counts as {}", Quoted(type), line.Type));
        ExplainValue(line);
        if (line.Operation != '\0') ExplainOperand(line);
    }

    void ExplainValue(const HeaderLine& line) {
        const std::string_view number = line.Number;
        const std::size_t place = OffsetOf(line, number);
        const bool isSigned =
            Trimmed(number).empty() && (line.Operation == '-' || line.Operation == '+');
        if (isSigned || number.starts_with("QL")) return;  // "-5" is nothing minus 5
        if (line.IsText) return ExplainNoNumber(number, place);
        if (number.starts_with("0x")) return ExplainHexadecimal(line, place);
        const std::string_view digits = Trimmed(number);
        const bool hasExponent = !digits.empty() && (digits.back() | 0x20) == 'e' &&
                                 IsFraction(digits.substr(0, digits.size() - 1));
        if (hasExponent && !IsWholeType(line.Type) && line.Operation != '\0')
            return Fail(place, fmt::format("an exponent has no sign: {} is read, then {} {}",
                                           digits.substr(0, digits.size() - 1), line.Operation,
                                           Quoted(line.Operand)));
        if (!(IsWholeType(line.Type) ? IsDigits(digits) : IsFraction(digits)))
            return Warn(place,
                        fmt::format("only the number that {} begins with is read", Quoted(number)));
        if (IsWholeType(line.Type)) NoteWidth(line, place, LeadingWhole(digits).value_or(0));
    }

    void ExplainNoNumber(std::string_view number, std::size_t place) {
        const std::string_view word = Trimmed(number);
        const auto isName = [&](std::string_view known) { return EqualsIgnoringCase(known, word); };
        const auto name = std::find_if(names_.begin(), names_.end(), isName);
        if (name == names_.end())
            return Fail(place, fmt::format("{} is no number: 0 is stored", Quoted(number)));
        Fail(place, *name == word ? "a blank stands before the keyword: 0 is stored"
                                  : fmt::format("{} is no keyword{}: 0 is stored", Quoted(word),
                                                DidYouMean(word, names_)));
    }

    void ExplainHexadecimal(const HeaderLine& line, std::size_t place) {
        const std::string_view digits = Trimmed(line.Number.substr(2));
        const bool isHexadecimal =
            !digits.empty() &&
            digits.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
        if (!isHexadecimal)
            return Warn(place, fmt::format("only the hexadecimal number that {} begins with is "
                                           "read",
                                           Quoted(line.Number)));
        // All bits of the width may be set: 0xFF is -1 in int8.
        const uint64_t value = HexadecimalNumber(digits);
        const std::size_t bytes = IsWholeType(line.Type) ? line.Size : sizeof(int32_t);
        if (value >> (8 * bytes) != 0) WarnOfWidth(line, place);
    }

    void NoteWidth(const HeaderLine& line, std::size_t place, int64_t value) {
        if (value > (int64_t{1} << (8 * line.Size)) - 1) WarnOfWidth(line, place);
    }

    void WarnOfWidth(const HeaderLine& line, std::size_t place) {
        Warn(place, fmt::format("{} does not fit into {}: its low bytes are stored",
                                Quoted(Trimmed(line.Number)), line.Type));
    }

    void ExplainOperand(const HeaderLine& line) {
        const std::size_t place = OffsetOf(line, line.Operand);
        const std::string_view digits = Trimmed(line.Operand);
        const double operand = FractionWithPoint(digits).value_or(0);
        if (!FractionWithPoint(digits))
            return Warn(place, fmt::format("the operand {} is no number: it counts as 0",
                                           Quoted(line.Operand)));
        if (!IsFraction(digits))
            Warn(place,
                 fmt::format("only the number that {} begins with is read", Quoted(line.Operand)));
        const double used = IsWholeType(line.Type) ? std::trunc(operand) : operand;
        if (used != operand)
            Warn(place, fmt::format("the operand {} counts as {} in {}", operand, used, line.Type));
        if (line.Operation == '/' && used == 0) Warn(place, "a division by 0 is left out");
    }

    std::string_view text_;
    const TemplateRemarks& remarks_;
    HeaderExplanation& out_;
    std::vector<std::string_view> names_;
    const std::vector<std::string_view> types_ = HeaderTypeWords();
    std::size_t lostLines_ = 0;
    std::size_t lostPlace_ = 0;
};

}  // namespace

HeaderExplanation ExplainHeader(std::string_view text, const std::vector<HeaderKeyword>& keywords,
                                const TemplateRemarks& remarks) {
    HeaderExplanation explanation;
    Explainer explainer(text, keywords, remarks, explanation);
    HeaderBuffer buffer;
    try {
        const int32_t count = ProcessHeaderTemplate(text, keywords, buffer, &explainer);
        explanation.Bytes.assign(buffer.begin(), buffer.begin() + count);
    } catch (int) {  // a JobFault: what ends a job here is only to be told
        explanation.IsMalformed = true;
    }
    explainer.Finish();
    return explanation;
}

void NoteCut(const AFilePath& path, std::string_view text, const TemplateRemarks& remarks) {
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(path.fullPath(), error);
    if (!error && bytes > text.size() + 1)
        remarks.Warning(text.size(), "a NUL byte ends the template: what follows is not read");
}
