#include "base/Utf16Decoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "base/Utf.h"

namespace quillon::base {
namespace {

std::string Bytes(const std::u16string& units, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : units) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}

/// Characters of one to four bytes, with runs of ASCII.
std::u16string RandomUnits(std::mt19937& random, std::size_t count) {
    std::u16string units;
    while (units.size() < count) {
        switch (random() % 5) {
            case 0:
                units += static_cast<char16_t>(0x80 + random() % 0x700);
                break;
            case 1:
                units += static_cast<char16_t>(0x3000 + random() % 0x7000);
                break;
            case 2:
                units += {static_cast<char16_t>(0xD800 + random() % 0x400),
                          static_cast<char16_t>(0xDC00 + random() % 0x400)};
                break;
            default:
                units.append(random() % 40, u'a');
        }
    }
    return units;
}

std::string Decoded(const std::string& bytes, bool bigEndian, std::mt19937& random,
                    std::size_t longestPiece) {
    Utf16Decoder decoder(bigEndian);
    std::string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t size = 1 + random() % longestPiece;
        decoder.Add(std::string_view(bytes).substr(at, size), text);
        at += size;
    }
    return text;
}

TEST(Utf16Decoder, GivesTheSameWhereverThePiecesAreCut) {
    std::mt19937 random(20261125);
    for (int i = 0; i < 400; ++i) {
        const bool bigEndian = i % 2 == 0;
        const std::size_t longest = i % 3 == 0 ? 3 : i % 3 == 1 ? 100 : 40'000;
        const std::u16string units = RandomUnits(random, 1 + random() % (longest > 100 ? 30'000 : 300));
        const std::string bytes = Bytes(units, bigEndian), expected = *Utf16ToUtf8(units);
        ASSERT_EQ(Decoded(bytes, bigEndian, random, longest), expected) << i;
        ASSERT_EQ(Decoded(bytes + "x", bigEndian, random, longest), expected) << i;
        ASSERT_EQ(Utf16BytesToUtf8(bytes, bigEndian), expected) << i;
        for (const char16_t lone : {char16_t{0xDC00}, char16_t{0xD800}}) {
            const std::string broken = bytes + Bytes({lone, u'z', u'z'}, bigEndian);
            ASSERT_EQ(Decoded(broken, bigEndian, random, longest), expected) << i;
        }
    }
}

}  // namespace
}  // namespace quillon::base
