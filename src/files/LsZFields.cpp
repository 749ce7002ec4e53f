#include "files/LsZFields.h"

#include "platform/Characters.h"
#include "platform/HexDigits.h"

namespace quillon {

namespace {

using View = std::u16string_view;

/// Keys in lower case, told apart by the letter before "=".
struct Key {
    View name;
    std::size_t LsZFields::*value;
};
constexpr Key kLength{u" ln=", &LsZFields::length}, kTime{u" dt=", &LsZFields::time};
constexpr Key kFrom{u"from=", &LsZFields::from}, kTo{u"to=", &LsZFields::to};
constexpr Key kRdc{u"rdc=", &LsZFields::rdc}, kCrc{u"crc=", &LsZFields::crc};

bool EndsWithKey(View text, View key) {
    return text.size() >= key.size() &&
           platform::EqualIgnoringCase<char16_t>(text.substr(text.size() - key.size()), key);
}

/// The key that the text ends in; null when there is none.
const Key* KeyAtEnd(View text) {
    const auto check = [text](const Key& key) { return EndsWithKey(text, key.name) ? &key : nullptr; };
    switch (text.size() > 2 ? platform::Lower(text[text.size() - 2]) : u'\0') {
        case u'n':
            return check(kLength);
        case u't':
            return check(kTime);
        case u'm':
            return check(kFrom);
        case u'o':
            return check(kTo);
        case u'c':
            return EndsWithKey(text, kRdc.name) ? &kRdc : check(kCrc);
        default:
            return nullptr;
    }
}

bool BeginsAsHex(View text) {
    return text.size() >= 2 && text[0] == u'0' && platform::Lower(text[1]) == u'x';
}

/// Negative when the unit is no digit of the base.
int DigitOf(char16_t unit, unsigned base) {
    const int digit = unit < 0x80 ? platform::HexDigit(static_cast<char>(unit)) : -1;
    return digit < static_cast<int>(base) ? digit : -1;
}

}  // namespace

LsZNumber LsZNumber::Read(View text, unsigned base) {
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    LsZNumber number;
    while (!text.empty() && platform::IsSpace(text.front())) text.remove_prefix(1);
    if (!text.empty() && (text.front() == u'-' || text.front() == u'+')) {
        number.isNegative = text.front() == u'-';
        text.remove_prefix(1);
    }
    const bool hasPrefix = base == 16 && BeginsAsHex(text) && text.size() > 2 && DigitOf(text[2], base) >= 0;
    if (hasPrefix) text.remove_prefix(2);
    for (const char16_t unit : text) {
        const int digit = DigitOf(unit, base);
        if (digit < 0) break;
        number.isThere = true;
        const auto added = static_cast<std::uint64_t>(digit);
        // The first comparison is enough for nearly all; the second divides.
        const bool fits = number.magnitude < most / 32 || number.magnitude <= (most - added) / base;
        number.magnitude = fits ? number.magnitude * base + added : most;
    }
    return number;
}

LsZFields LsZFields::Find(View text) {
    LsZFields fields;
    for (std::size_t at = 0; (at = text.find(u'=', at)) != kNone;) {
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
