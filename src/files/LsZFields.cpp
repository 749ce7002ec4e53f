#include "files/LsZFields.h"

#include "platform/Characters.h"
#include "platform/HexDigits.h"

namespace quillon {

namespace {

using View = std::u16string_view;

struct Key {
    View name;  // in lower case
    std::size_t LsZFields::*value;
};
constexpr Key kKeys[] = {{u" ln=", &LsZFields::length}, {u" dt=", &LsZFields::time},
                         {u"from=", &LsZFields::from},  {u"to=", &LsZFields::to},
                         {u"rdc=", &LsZFields::rdc},    {u"crc=", &LsZFields::crc}};

bool EndsWithKey(View text, View key) {
    return text.size() >= key.size() &&
           platform::EqualIgnoringCase<char16_t>(text.substr(text.size() - key.size()), key);
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
        const bool fits = number.magnitude <= (most - added) / base;
        number.magnitude = fits ? number.magnitude * base + added : most;
    }
    return number;
}

LsZFields LsZFields::Find(View text) {
    LsZFields fields;
    for (std::size_t at = 0; (at = text.find(u'=', at)) != kNone;) {
        ++at;
        const View before = text.substr(0, at);
        if (fields.hexLength == kNone && EndsWithKey(before, kKeys[0].name) && BeginsAsHex(text.substr(at))) {
            fields.hexLength = at + 2;
        }
        for (const Key& key : kKeys) {
            if (fields.*key.value == kNone && EndsWithKey(before, key.name)) fields.*key.value = at;
        }
    }
    return fields;
}

}  // namespace quillon
