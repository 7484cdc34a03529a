#include "plugin/output/HeaderFields.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "PrinterDriver/Common/Xsrc/JobFault.h"
#include "host/Numbers.h"

namespace {

constexpr std::string_view kComment = "//ql";
constexpr int32_t kMostCharBytes = 600;

enum TypeIndex : int32_t { kInt32, kInt16, kInt8, kFloat, kDouble, kChar, kTypeCount };

struct FieldType {
    std::string_view word;
    int32_t bytes;
};
constexpr FieldType kTypes[kTypeCount] = {
    {"int32", 4}, {"int16", 2}, {"int8", 1}, {"float", 4}, {"double", 8}, {"char", 0},
};

/// A value with no modifier has the operation '\0'.
struct Modifier {
    char operation = '\0';
    double operand = 0;
    std::string_view operandText;
};

struct NoValue {};
/// A number, a text (which stores nothing), or nothing: a keyword that does not exist.
using Value = std::variant<int32_t, float, double, std::string, NoValue>;

bool IsKeyword(std::string_view text) {
    return text.starts_with("QL_") || text.starts_with("QLDO_");
}

/// Toward zero, beyond 64 bits the nearest that fits, and 0 for no number.
int64_t Truncate(double value) {
    constexpr double kBeyond = 9223372036854775808.0;  // 2^63
    if (std::isnan(value)) return 0;
    if (value >= kBeyond) return std::numeric_limits<int64_t>::max();
    if (value < -kBeyond) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(value);
}

float ToFloat(double value) {
    constexpr double kLargest = double{std::numeric_limits<float>::max()};
    // Half a step above the largest float is where rounding goes to infinity.
    constexpr double kInfinite = kLargest * (1 + 0.25 / (1 << 23));
    if (std::abs(value) >= kInfinite)
        return std::copysign(std::numeric_limits<float>::infinity(), value < 0 ? -1.0F : 1.0F);
    if (std::abs(value) > kLargest)
        return std::copysign(std::numeric_limits<float>::max(), value < 0 ? -1.0F : 1.0F);
    return static_cast<float>(value);
}

/// The first of + - / * that occurs at all cuts the value at its first occurrence.
Modifier SplitModifier(std::string_view& value) {
    for (const char operation : {'+', '-', '/', '*'}) {
        const std::size_t place = value.find(operation);
        if (place == std::string_view::npos) continue;
        const std::string_view operandText = value.substr(place + 1);
        const double operand = FractionWithPoint(operandText).value_or(0);
        value = value.substr(0, place);
        return {operation, std::isfinite(operand) ? operand : 0, operandText};
    }
    return {};
}

int32_t LowBytes(uint64_t value) {
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

Value ReadNumber(std::string_view text, TypeIndex type,
                 const std::vector<HeaderKeyword>& keywords) {
    if (text.starts_with("0x")) return LowBytes(HexadecimalNumber(text.substr(2)));
    if (IsKeyword(text)) {
        for (const HeaderKeyword& keyword : keywords)
            if (keyword.Name == text)
                return std::visit([](const auto& value) { return Value(value); }, keyword.Value);
        return NoValue();
    }
    if (type == kFloat || type == kDouble) {
        const std::optional<double> fraction = FractionWithPoint(text);
        if (!fraction) return std::string(text);
        return type == kFloat ? Value(ToFloat(*fraction)) : Value(*fraction);
    }
    const std::optional<int64_t> whole = LeadingWhole(text);
    return whole ? Value(LowBytes(static_cast<uint64_t>(*whole))) : Value(std::string(text));
}

/// The number in an integer field's width.
int64_t InWidth(int64_t value, int32_t bytes) {
    const int shift = 64 - 8 * bytes;
    return static_cast<int64_t>(static_cast<uint64_t>(value) << shift) >> shift;
}

int64_t WholeOf(const Value& value) {
    if (const auto* whole = std::get_if<int32_t>(&value)) return *whole;
    if (const auto* single = std::get_if<float>(&value)) return Truncate(double{*single});
    if (const auto* fraction = std::get_if<double>(&value)) return Truncate(*fraction);
    return 0;
}

int64_t ModifyWhole(int64_t value, const Modifier& modifier) {
    const int64_t limited = Truncate(modifier.operand);
    const bool beyond = std::abs(modifier.operand) >= 9223372036854775808.0;  // 2^63
    const int64_t operand = beyond ? 0 : limited;
    const auto left = static_cast<uint64_t>(value);
    const auto right = static_cast<uint64_t>(operand);
    switch (modifier.operation) {
        case '+':
            return static_cast<int64_t>(left + right);
        case '-':
            return static_cast<int64_t>(left - right);
        case '*':
            return static_cast<int64_t>(left * right);
        case '/':
            // Values are of 32 bits at most: the quotient by -1 fits.
            return operand == 0 ? value : value / operand;
        default:
            return value;
    }
}

template <class Number>
Number ModifyFraction(Number value, char operation, Number operand) {
    switch (operation) {
        case '+':
            return value + operand;
        case '-':
            return value - operand;
        case '*':
            return value * operand;
        case '/':
            return operand == 0 ? value : value / operand;
        default:
            return value;
    }
}

template <class Number>
Number FractionOf(const Value& value) {
    if (const auto* whole = std::get_if<int32_t>(&value)) return static_cast<Number>(*whole);
    if (const auto* single = std::get_if<float>(&value)) return Number{*single};
    if (const auto* fraction = std::get_if<double>(&value)) {
        if constexpr (sizeof(Number) == sizeof(float))
            return ToFloat(*fraction);
        else
            return *fraction;
    }
    return 0;
}

void StoreBits(uint64_t bits, int32_t bytes, uint8_t* field) {
    for (int32_t i = 0; i < bytes; ++i)
        field[i] = static_cast<uint8_t>(bits >> (8 * i));
}

void StoreNumber(TypeIndex type, const Value& value, const Modifier& modifier, uint8_t* field) {
    const int32_t bytes = kTypes[type].bytes;
    if (type == kFloat) {
        const float result =
            ModifyFraction(FractionOf<float>(value), modifier.operation, ToFloat(modifier.operand));
        StoreBits(std::bit_cast<uint32_t>(result), bytes, field);
    } else if (type == kDouble) {
        const double result =
            ModifyFraction(FractionOf<double>(value), modifier.operation, modifier.operand);
        StoreBits(std::bit_cast<uint64_t>(result), bytes, field);
    } else {
        const int64_t stored = InWidth(WholeOf(value), bytes);
        StoreBits(static_cast<uint64_t>(ModifyWhole(stored, modifier)), bytes, field);
    }
}

/// Reads one template line after the other into a header.
class HeaderReader {
  public:
    HeaderReader(std::string_view text, const std::vector<HeaderKeyword>& keywords,
                 HeaderBuffer& buffer)
        : text_(text), keywords_(keywords), buffer_(buffer) {}

    std::size_t Used() const { return used_; }
    bool AtEnd() const { return next_ == std::string_view::npos; }

    HeaderLine ReadLine() {
        HeaderLine line;
        line.Begin = next_;
        const std::size_t feed = text_.find('\n', next_);
        const bool isLast = feed == std::string_view::npos;
        line.End = isLast ? text_.size() : std::max(line.Begin, feed == 0 ? 0 : feed - 1);
        next_ = isLast || feed + 1 == text_.size() ? std::string_view::npos : feed + 1;
        ReadField(line);
        return line;
    }

  private:
    void ReadField(HeaderLine& line) {
        std::string_view text = text_.substr(line.Begin, line.End - line.Begin);
        const std::size_t comment = text.rfind(kComment);
        const bool hasComment = comment != std::string_view::npos;
        if (hasComment) text = text.substr(0, comment);
        const std::size_t comma = text.find(',');
        if (comma == std::string_view::npos) {
            const bool blank = text.find_first_not_of(" \t") == std::string_view::npos;
            line.Result = blank ? HeaderLineResult::kEmpty : HeaderLineResult::kNoComma;
            return;
        }
        line.ValueBegin = line.Begin + comma + 1;
        line.Value = text.substr(comma + 1);
        const auto type = std::find_if(
            std::begin(kTypes), std::end(kTypes),
            [&](const auto& known) { return text.substr(0, comma).starts_with(known.word); });
        if (type == std::end(kTypes)) {
            line.Result = HeaderLineResult::kUnknownType;
            return;
        }
        line.Type = type->word;
        const auto index = static_cast<TypeIndex>(type - std::begin(kTypes));
        if (index == kChar) return ReadText(line);
        // Blanks before a comment set it off; they are not the value's.
        if (hasComment) line.Value = line.Value.substr(0, line.Value.find_last_not_of(' ') + 1);
        ReadNumberField(line, index);
    }

    void ReadNumberField(HeaderLine& line, TypeIndex type) {
        std::string_view number = line.Value;
        const Modifier modifier = SplitModifier(number);
        const Value value = ReadNumber(number, type, keywords_);
        line.Number = number;
        line.Operation = modifier.operation;
        line.Operand = modifier.operandText;
        if (std::holds_alternative<NoValue>(value)) {
            line.Result = HeaderLineResult::kUnknownKeyword;
            return;
        }
        line.IsText = std::holds_alternative<std::string>(value);
        if (uint8_t* const field = Take(line, static_cast<std::size_t>(kTypes[type].bytes)))
            StoreNumber(type, value, modifier, field);
    }

    void ReadText(HeaderLine& line) {
        const std::size_t bracket = line.Value.find(']');
        if (bracket == std::string_view::npos) {
            line.Result = HeaderLineResult::kNoCharSize;
            return;
        }
        if (bracket == 0) {
            line.Result = HeaderLineResult::kMalformed;
            return;
        }
        const int32_t size = Atoi(line.Value.substr(1, bracket - 1));
        if (size < 1 || size > kMostCharBytes) {
            line.Result = HeaderLineResult::kBadCharSize;
            return;
        }
        const std::string_view content = line.Value.substr(bracket + 1);
        line.Content = content;
        const Value value = IsKeyword(content) ? ReadNumber(content, kChar, keywords_) : Value(0);
        if (std::holds_alternative<NoValue>(value)) {
            line.Result = HeaderLineResult::kUnknownKeyword;
            return;
        }
        uint8_t* const field = Take(line, static_cast<std::size_t>(size));
        const bool isText = !IsKeyword(content) && !content.starts_with("0x");
        if (field != nullptr && isText && !content.empty())
            std::memcpy(field, content.data(), std::min(content.size(), line.Size));
    }

    /// Room for a field, or null at the header's end.
    uint8_t* Take(HeaderLine& line, std::size_t bytes) {
        line.Offset = used_;
        if (bytes > buffer_.size() - used_) {
            line.Result = HeaderLineResult::kDoesNotFit;
            return nullptr;
        }
        line.Result = HeaderLineResult::kField;
        line.Size = bytes;
        used_ += bytes;
        return buffer_.data() + line.Offset;
    }

    std::string_view text_;
    const std::vector<HeaderKeyword>& keywords_;
    HeaderBuffer& buffer_;
    std::size_t next_ = 0;
    std::size_t used_ = 0;
};

}  // namespace

int32_t FieldSize(int32_t typeIndex) {
    return typeIndex >= 0 && typeIndex < kTypeCount ? kTypes[typeIndex].bytes : -1;
}

std::vector<std::string_view> HeaderTypeWords() {
    std::vector<std::string_view> words;
    for (const FieldType& type : kTypes)
        words.push_back(type.word);
    return words;
}

int32_t ProcessHeaderTemplate(std::string_view text, const std::vector<HeaderKeyword>& keywords,
                              HeaderBuffer& buffer, HeaderLineListener* listener) {
    buffer.fill(0);
    if (text.empty()) return 0;
    HeaderReader reader(text, keywords, buffer);
    while (!reader.AtEnd()) {
        const HeaderLine line = reader.ReadLine();
        if (listener != nullptr) listener->OnLine(line);
        if (line.Result == HeaderLineResult::kMalformed) Raise(kOutputFailed);
        if (line.Result == HeaderLineResult::kDoesNotFit) break;
    }
    return static_cast<int32_t>(reader.Used());
}
