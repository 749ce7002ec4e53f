#include "files/LsZFields.h"

#include "base/Characters.h"
#include "base/HexDigits.h"

namespace quillon {

namespace {

using View = std::string_view;

/// Keys in lower case, told apart by the letter before "=".
struct Key {
    View name;
    std::size_t LsZFields::*value;
};
constexpr Key kLength{" ln=", &LsZFields::length}, kTime{" dt=", &LsZFields::time};
constexpr Key kFrom{"from=", &LsZFields::from}, kTo{"to=", &LsZFields::to};
constexpr Key kRdc{"rdc=", &LsZFields::rdc}, kCrc{"crc=", &LsZFields::crc};

bool EndsWithKey(View text, View key) {
    return text.size() >= key.size() &&
           base::EqualIgnoringCase<char>(text.substr(text.size() - key.size()), key);
}

/// The key that the text ends in; null when there is none.
const Key* KeyAtEnd(View text) {
    const auto check = [text](const Key& key) { return EndsWithKey(text, key.name) ? &key : nullptr; };
    switch (text.size() > 2 ? base::Lower(text[text.size() - 2]) : '\0') {
        case 'n':
            return check(kLength);
        case 't':
            return check(kTime);
        case 'm':
            return check(kFrom);
        case 'o':
            return check(kTo);
        case 'c':
            return EndsWithKey(text, kRdc.name) ? &kRdc : check(kCrc);
        default:
            return nullptr;
    }
}

bool BeginsAsHex(View text) { return text.size() >= 2 && text[0] == '0' && base::Lower(text[1]) == 'x'; }

/// Reads the digits of a base up to the first character that is none.
template <unsigned kBase>
void ReadDigits(View text, LsZNumber& number) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t magnitude = 0;
    std::size_t count = 0;
    for (; count < text.size(); ++count) {
        const auto digit = static_cast<unsigned>(base::HexDigit(text[count]));  // none is a large one
        if (digit >= kBase) break;
        // The first comparison is enough for nearly all.
        const bool fits = magnitude < kMost / 32 || magnitude <= (kMost - digit) / kBase;
        magnitude = fits ? magnitude * kBase + digit : kMost;
    }
    number.isThere = count > 0;
    number.magnitude = magnitude;
}

}  // namespace

LsZNumber LsZNumber::Read(View text, unsigned base) {
    LsZNumber number;
    while (!text.empty() && base::IsSpace(text.front())) text.remove_prefix(1);
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        number.isNegative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (base == 10) {
        ReadDigits<10>(text, number);
        return number;
    }
    const bool hasPrefix = BeginsAsHex(text) && text.size() > 2 && base::HexDigit(text[2]) >= 0;
    ReadDigits<16>(hasPrefix ? text.substr(2) : text, number);
    return number;
}

LsZFields LsZFields::Find(View text) {
    LsZFields fields;
    for (std::size_t at = 0; (at = text.find('=', at)) != kNone;) {
        ++at;
        const Key* const key = KeyAtEnd(text.substr(0, at));
        if (key == nullptr) continue;
        if (fields.*key->value == kNone) fields.*key->value = at;
        const bool isHex = key == &kLength && fields.hexLength == kNone && BeginsAsHex(text.substr(at));
        if (isHex) fields.hexLength = at + 2;
    }
    return fields;
}

}  // namespace quillon
