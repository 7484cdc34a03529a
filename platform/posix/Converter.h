#pragma once

#include <iconv.h>

#include <string>
#include <string_view>

/// A conversion between two character sets.
class Converter {
  public:
    /// Throws std::bad_alloc when the system has no room for it.
    Converter(const char* to, const char* from);
    ~Converter();
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    /// False for a set that the system does not know.
    bool IsOpen() const;

    /// Converts onto `out` up to the first bytes that have no counterpart, or until `out` has more
    /// than `mostBytes`, and shortens `text` by what it converted. Answers iconv's error: 0 when
    /// all is converted, E2BIG when it was too much.
    int Run(std::string_view& text, std::string& out, std::size_t mostBytes = std::string::npos);

  private:
    int Step(char** input, std::size_t* inputLeft, char** output, std::size_t* outputLeft);

    iconv_t handle_;
};
