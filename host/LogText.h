#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// A text that is put together without an allocation; what does not fit is cut off. Room for two
/// paths of the longest kind and some words.
class LogText {
  public:
    LogText& operator<<(std::string_view text) {
        const std::size_t count = text.size() < Room() ? text.size() : Room();
        if (count > 0) std::memcpy(text_ + size_, text.data(), count);
        size_ += count;
        return *this;
    }
    LogText& operator<<(char character) { return *this << std::string_view(&character, 1); }
    LogText& operator<<(int64_t number) {
        char digits[24];
        const auto written = std::to_chars(digits, digits + sizeof digits, number);
        return *this << std::string_view(digits, static_cast<std::size_t>(written.ptr - digits));
    }
    LogText& operator<<(int32_t number) { return *this << int64_t{number}; }

    std::string_view View() const { return {text_, size_}; }

  private:
    std::size_t Room() const { return sizeof text_ - size_; }

    char text_[9216];
    std::size_t size_ = 0;
};

/// Appends "WHAT: SUBJECT: REASON" to an entry. `subject` is a file or a name, "" for none;
/// `systemError` the system's number for the reason, 0 where it gave none.
void AppendFault(LogText& entry, std::string_view what, std::string_view subject, int systemError);
