#include "platform/posix/Converter.h"

#include <cerrno>
#include <new>

Converter::Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (!IsOpen() && errno != EINVAL) throw std::bad_alloc();
}

Converter::~Converter() {
    if (IsOpen()) iconv_close(handle_);
}

bool Converter::IsOpen() const {
    return handle_ != reinterpret_cast<iconv_t>(-1);
}

int Converter::Run(std::string_view& text, std::string& out, std::size_t mostBytes) {
    char* input = const_cast<char*>(text.data());  // iconv's signature; it only reads
    std::size_t inputLeft = text.size();
    int error = E2BIG;
    while (error == E2BIG && out.size() <= mostBytes) {
        char buffer[4096];
        char* output = buffer;
        std::size_t outputLeft = sizeof buffer;
        error = Step(&input, &inputLeft, &output, &outputLeft);
        if (error == 0) Step(nullptr, nullptr, &output, &outputLeft);  // back to the first state
        out.append(buffer, static_cast<std::size_t>(output - buffer));
    }
    text = {input, inputLeft};
    return out.size() > mostBytes ? E2BIG : error;
}

int Converter::Step(char** input, std::size_t* inputLeft, char** output, std::size_t* outputLeft) {
    const std::size_t result = iconv(handle_, input, inputLeft, output, outputLeft);
    return result == static_cast<std::size_t>(-1) ? errno : 0;
}
