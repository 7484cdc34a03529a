#include "platform/posix/CharacterSet.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>

#include "platform/Utf8.h"

namespace {

constexpr unsigned kFirstHigh = 0x80;
/// No character set uses lower bytes behind the first of a character.
constexpr unsigned kLowestSecond = 0x30;
/// What characters of three bytes begin with in the sets that have some.
constexpr unsigned kThreeByteLead = 0x8F;

unsigned Byte(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

/// iconv's answer to these bytes as a text of their own: 0, EINVAL when they end within a
/// character, EILSEQ when they are none.
int Try(iconv_t converter, std::string_view bytes) {
    char output[64];
    char* in = const_cast<char*>(bytes.data());  // iconv's signature; it only reads
    char* out = output;
    std::size_t inLeft = bytes.size();
    std::size_t outLeft = sizeof output;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    const std::size_t answer = iconv(converter, &in, &inLeft, &out, &outLeft);
    return answer == static_cast<std::size_t>(-1) ? errno : 0;
}

/// Of all sets that have these two characters, UTF-8 alone has them so, and none without them.
bool HasUtf8Characters(iconv_t converter) {
    return Try(converter, "\xC3\xA4\xF0\x9F\x98\x80") == 0 && Try(converter, "\xC3\xC3") != 0 &&
           Try(converter, "\xF0\x9F\x98") == EINVAL;
}

}  // namespace

int CharacterSet::Learn(const char* name) noexcept {
    *this = CharacterSet();
    iconv_t converter = iconv_open("UTF-8", name);
    if (converter == reinterpret_cast<iconv_t>(-1)) return errno;
    isUtf8_ = HasUtf8Characters(converter);
    for (unsigned lead = kFirstHigh; lead < leads_.size() && !isUtf8_; ++lead) {
        const char byte = static_cast<char>(lead);
        if (Try(converter, {&byte, 1}) != EINVAL) continue;
        leads_.set(lead);
        LearnPairs(converter, lead);
    }
    iconv_close(converter);
    return 0;
}

void CharacterSet::LearnPairs(void* converter, unsigned lead) noexcept {
    bool isPairLead = false;
    bool isLongLead = false;
    for (unsigned second = kLowestSecond; second < trails_.size(); ++second) {
        const char pair[] = {static_cast<char>(lead), static_cast<char>(second)};
        const int answer = Try(converter, {pair, sizeof pair});
        if (answer == 0) trails_.set(second);
        if (answer == EINVAL) longSeconds_.set(second);
        isPairLead = isPairLead || answer == 0;
        isLongLead = isLongLead || answer == EINVAL;
    }
    // Pairs that no character has got yet, or the maker's own, are pairs all the same.
    pairLeads_.set(lead, isPairLead || !isLongLead);
}

std::size_t CharacterSet::CharacterBytes(std::string_view text) const noexcept {
    if (isUtf8_) return std::max<std::size_t>(Utf8CharacterBytes(text), 1);
    if (!leads_[Byte(text, 0)] || text.size() < 2) return 1;
    if (pairLeads_[Byte(text, 0)] && trails_[Byte(text, 1)]) return 2;
    const std::size_t bytes = LongBytes(text);
    return bytes == 0 || bytes > text.size() ? 1 : bytes;
}

bool CharacterSet::IsCutCharacter(std::string_view text) const noexcept {
    if (isUtf8_) return IsCutUtf8Character(text);
    if (!leads_[Byte(text, 0)]) return false;
    return text.size() == 1 || (CharacterBytes(text) == 1 && LongBytes(text) > text.size());
}

/// Bytes of a character of more than two, as far as the first two tell and the others do not speak
/// against it; 0 for none. `text` has two bytes or more, the first of them a lead.
std::size_t CharacterSet::LongBytes(std::string_view text) const noexcept {
    if (!longSeconds_[Byte(text, 1)]) return 0;
    if (Byte(text, 1) >= kFirstHigh) return Byte(text, 0) == kThreeByteLead ? 3 : 4;
    // Two pairs of a lead and a digit.
    const bool isSecondPair = (text.size() < 3 || leads_[Byte(text, 2)]) &&
                              (text.size() < 4 || longSeconds_[Byte(text, 3)]);
    return isSecondPair ? 4 : 0;
}
