#include "platform/CodePage.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* kUtf8 = "UTF-8";

class Converter {
  public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
        // A character set that the system does not know counts as UTF-8.
        if (!IsOpen()) handle_ = iconv_open(kUtf8, kUtf8);
    }
    ~Converter() {
        if (IsOpen()) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    /// Converts up to the first byte that has no counterpart, consuming `text` as far as it got;
    /// answers iconv's error, 0 when all is converted.
    int Run(std::string_view& text, std::string& out) {
        char* input = const_cast<char*>(text.data());  // iconv's signature; it only reads
        std::size_t inputLeft = text.size();
        int error = E2BIG;
        while (error == E2BIG) {
            char buffer[1024];
            char* output = buffer;
            std::size_t outputLeft = sizeof buffer;
            error = Step(&input, &inputLeft, &output, &outputLeft);
            if (error == 0) Step(nullptr, nullptr, &output, &outputLeft);  // back to first state
            out.append(buffer, static_cast<std::size_t>(output - buffer));
        }
        text = {input, inputLeft};
        return error;
    }

  private:
    bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    int Step(char** input, std::size_t* inputLeft, char** output, std::size_t* outputLeft) {
        const std::size_t result = iconv(handle_, input, inputLeft, output, outputLeft);
        return result == static_cast<std::size_t>(-1) ? errno : 0;
    }

    iconv_t handle_;
};

/// Bytes of the UTF-8 character that starts `text`; 1 when it is no whole character.
std::size_t Utf8CharacterBytes(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    if (length > text.size()) return 1;
    for (std::size_t i = 1; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 1;
    }
    return length;
}

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

std::string Convert(std::string_view text, const char* to, const char* from) {
    const bool changesNothing = std::strcmp(to, from) == 0 && IsAscii(text);
    if (changesNothing) return std::string(text);  // the usual case; opening iconv is slow
    Converter converter(to, from);
    std::string out;
    out.reserve(text.size());
    while (!text.empty() && converter.Run(text, out) != 0 && !text.empty()) {
        out += '?';
        text.remove_prefix(std::strcmp(from, kUtf8) == 0 ? Utf8CharacterBytes(text) : 1);
    }
    return out;
}

const char* CodePageName() {
    const char* name = std::getenv("QL_CODE_PAGE");
    return name != nullptr && *name != '\0' ? name : kUtf8;
}

}  // namespace

std::string AnsiToUtf8(std::string_view text) {
    return Convert(text, kUtf8, CodePageName());
}

std::optional<std::string> ExactAnsiToUtf8(std::string_view text) {
    Converter converter(kUtf8, CodePageName());
    std::string out;
    if (!text.empty() && converter.Run(text, out) != 0) return std::nullopt;
    return out;
}

std::string Utf8ToAnsi(std::string_view text) {
    return Convert(text, CodePageName(), kUtf8);
}
