#include "platform/Encoding.h"

#include <cerrno>

#include "platform/posix/Converter.h"

Conversion EncodedToUtf8(std::string_view text, const char* encoding, std::size_t mostBytes,
                         std::string& utf8) {
    utf8.clear();
    Converter converter("UTF-8", encoding);
    if (!converter.IsOpen()) return Conversion::kUnknown;
    const int error = converter.Run(text, utf8, mostBytes);
    if (error == 0) return Conversion::kDone;
    return error == E2BIG ? Conversion::kTooLarge : Conversion::kInvalid;
}
