#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The language of header templates, a line a field:
//
//   template = { line LF }                 the character before an LF goes with it (CR LF)
//   line     = [ field ] [ "//ql" comment ]        the last marker counts
//   field    = type "," number [ modifier ]  |  "char" "," "[" size "]" content
//   type     = "int32" | "int16" | "int8" | "float" | "double" | "char"   and what follows it
//   number   = "0x" hexadecimal | keyword | decimal
//   modifier = ( "+" | "-" | "/" | "*" ) decimal
//   keyword  = "QL_" name | "QLDO_" name
//
// Fields stand back to back, little-endian. A line that is none of these is ignored.

/// Value of a keyword. The alternatives stand at the places of HeaderValueKind.
using HeaderValue = std::variant<int32_t, float, double, std::string>;

struct HeaderKeyword {
    std::string Name;
    HeaderValue Value;
};

/// Bytes that a header has room for.
inline constexpr std::size_t kMostHeaderBytes = 2000;
using HeaderBuffer = std::array<uint8_t, kMostHeaderBytes>;

/// What became of a template's line.
enum class HeaderLineResult {
    kField,           ///< its bytes stand in the header
    kEmpty,           ///< nothing, or a comment only
    kNoComma,         ///< ignored: free text
    kUnknownType,     ///< ignored
    kUnknownKeyword,  ///< ignored
    kNoCharSize,      ///< ignored: a char field without ']'
    kBadCharSize,     ///< ignored: a size outside 1 to 600
    kMalformed,       ///< a char field that begins with ']': there is no header
    kDoesNotFit,      ///< the header ends before this field
};

/// A line as the language reads it, for whoever explains a template.
struct HeaderLine {
    HeaderLineResult Result = HeaderLineResult::kEmpty;
    std::size_t Begin = 0;       ///< place of the line in the template's text
    std::size_t End = 0;         ///< one past it, without CR LF
    std::string_view Type;       ///< the type word of the language
    std::string_view Value;      ///< what the field is made of, with its modifier or size
    std::size_t ValueBegin = 0;  ///< its place in the text
    // Parts of Value: of a numeric field the number and its modifier, if there is one ('\0': none),
    // of a char field what stands behind its size.
    std::string_view Number;
    char Operation = '\0';
    std::string_view Operand;
    std::string_view Content;
    std::size_t Offset = 0;  ///< of the field in the header
    std::size_t Size = 0;    ///< bytes; 0 when there is no field
    bool IsText = false;     ///< a numeric field whose value is no number, so that it is 0
};

class HeaderLineListener {
  public:
    virtual void OnLine(const HeaderLine& line) = 0;

  protected:
    ~HeaderLineListener() = default;
};

/// Bytes of a field by the place of its type in the type table (int32, int16, int8, float, double,
/// char): 0 for char, whose size stands in its line, and -1 for a place beyond the table.
int32_t FieldSize(int32_t typeIndex);

/// The words of the type table, in its order.
std::vector<std::string_view> HeaderTypeWords();

/// Fills `buffer`, zero behind the header, and answers the header's bytes: 0 when no line gives a
/// field. A field that does not fit ends the header. Raises kOutputFailed for a malformed char
/// field. `listener` may be null; it hears of every line in order.
///
/// Numbers that do not fit: hexadecimal and decimal integers are read as 64 bits, saturated, and
/// their low bytes kept; a keyword's fraction likewise, no number as 0; a double beyond single
/// precision is infinite there. An infinite operand is 0, in integer fields one beyond 64 bits too.
int32_t ProcessHeaderTemplate(std::string_view text, const std::vector<HeaderKeyword>& keywords,
                              HeaderBuffer& buffer, HeaderLineListener* listener = nullptr);
