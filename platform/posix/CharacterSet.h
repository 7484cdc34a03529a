#pragma once

#include <bitset>
#include <cstddef>
#include <string_view>

/// How long the characters of one of iconv's character sets are, learned by trying them out.
class CharacterSet {
  public:
    /// 0, or iconv's error: EINVAL for a name that it does not know.
    int Learn(const char* name) noexcept;

    bool IsUtf8() const { return isUtf8_; }
    /// Bytes of the character that starts `text`, which is not empty; 1 for what is none.
    std::size_t CharacterBytes(std::string_view text) const noexcept;
    /// Whether `text`, which is not empty, may be a character's beginning that was cut behind it.
    bool IsCutCharacter(std::string_view text) const noexcept;

  private:
    void LearnPairs(void* converter, unsigned lead) noexcept;
    std::size_t LongBytes(std::string_view text) const noexcept;

    bool isUtf8_ = false;
    std::bitset<256> leads_;        ///< first bytes of characters of several
    std::bitset<256> pairLeads_;    ///< of two
    std::bitset<256> trails_;       ///< second bytes of two
    std::bitset<256> longSeconds_;  ///< second bytes of more than two
};
