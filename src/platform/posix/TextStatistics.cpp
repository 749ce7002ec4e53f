#include <cstdint>

#include "platform/TextApi.h"

namespace quillon::platform {

namespace {

/// More text than this tells nothing more. In bytes.
constexpr std::size_t kSampleSize = 128 * 1024;

bool IsBetween(unsigned value, unsigned first, unsigned last) { return value >= first && value <= last; }

bool IsAsciiText(unsigned byte) { return IsBetween(byte, 0x20, 0x7E) || IsBetween(byte, '\t', '\r'); }

/// Bytes that no text of eight bits a character holds. NUL is none of them, as it separates words; nor
/// are the end-of-file mark and the escape.
bool IsBinary(unsigned byte) {
    return IsBetween(byte, 1, 8) || (IsBetween(byte, 0xE, 0x1F) && byte != 0x1A && byte != 0x1B) ||
           byte == 0x7F;
}

bool IsKana(unsigned unit) { return IsBetween(unit, 0x3041, 0x309E) || IsBetween(unit, 0x30A1, 0x30FE); }

/// Units that a text has seldom: control and private-use characters.
bool IsOdd(unsigned unit) {
    const bool isControl = (unit < 0x20 && !IsAsciiText(unit) && unit != 0x1A && unit != 0x1B) ||
                           (IsBetween(unit, 0x7F, 0x9F) && unit != 0x85);
    return isControl || IsBetween(unit, 0xE000, 0xF8FF);
}

/// Units that no text has: NUL, non-characters, and the bytes CR LF as one unit.
bool IsImpossible(unsigned unit) {
    return unit == 0 || unit == 0x0A0D || unit >= 0xFFFE || IsBetween(unit, 0xFDD0, 0xFDEF);
}

/// Units whose low byte is NUL and that are not common, as a line of a frame or an ideographic space is.
bool HasNulLow(unsigned unit) {
    return (unit & 0xFF) == 0 && unit != 0x2500 && unit != 0x3000 && unit != 0x4E00;
}

/// Counts the little-endian units of a text by what they say about it.
struct Counts {
    std::size_t units = 0;
    std::size_t ascii = 0;   ///< with a high byte of 0
    std::size_t latin = 0;   ///< letters of Latin-1, with a high byte of 0
    std::size_t script = 0;  ///< with a high byte that is binary: Cyrillic, Greek, Arabic, ...
    std::size_t kana = 0;
    std::size_t indic = 0;       ///< with a high byte that is white space as well
    std::size_t bytePairs = 0;   ///< two bytes of ASCII text
    std::size_t binaryLows = 0;  ///< a binary byte before one that is not
    std::size_t nulLows = 0;
    std::size_t odd = 0;
    bool impossible = false;

    void Add(unsigned low, unsigned high) {
        const unsigned unit = high << 8 | low;
        ++units;
        impossible |= IsImpossible(unit);
        nulLows += HasNulLow(unit);
        odd += IsOdd(unit);
        ascii += high == 0 && IsAsciiText(low);
        latin += high == 0 && low >= 0xA0;
        script += IsBinary(high);
        kana += IsKana(unit);
        indic += IsBetween(high, '\t', '\r');
        bytePairs += IsAsciiText(low) && IsAsciiText(high);
        binaryLows += IsBinary(low) && high != 0 && !IsBinary(high);
    }
};

Counts CountUnits(std::string_view bytes) {
    Counts counts;
    bool afterHighSurrogate = false;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const unsigned high = static_cast<unsigned char>(bytes[i + 1]);
        counts.Add(static_cast<unsigned char>(bytes[i]), high);
        counts.impossible |= ((high & 0xFC) == 0xDC) != afterHighSurrogate;
        afterHighSurrogate = (high & 0xFC) == 0xD8;
    }
    counts.impossible |= afterHighSurrogate;
    return counts;
}

}  // namespace

std::size_t Utf16SampleSize() { return kSampleSize; }

bool LooksLikeUtf16(std::string_view bytes) {
    if (bytes.size() > kSampleSize) {
        // A sample must not end inside a surrogate pair.
        const bool inPair = (static_cast<unsigned char>(bytes[kSampleSize - 1]) & 0xFC) == 0xD8;
        bytes = bytes.substr(0, inPair ? kSampleSize - 2 : kSampleSize);
    }
    const Counts counts = CountUnits(bytes);
    if (counts.units == 0 || counts.impossible) return false;
    if (counts.odd * 20 > counts.units || counts.nulLows * 10 > counts.units) return false;

    // The high bytes of most scripts are bytes that a text of eight bits does not hold at all.
    const std::size_t alphabetic = counts.ascii + counts.latin + counts.script;
    const bool isAlphabetic = alphabetic > counts.latin && alphabetic * 4 >= counts.units * 3;
    if (isAlphabetic && counts.bytePairs * 10 <= counts.units) return true;

    // Those of the others are letters of a code page as well. What tells such a text are its low bytes,
    // every tenth of which is binary, and the high bytes of its spaces and line ends.
    const std::size_t others = counts.units - alphabetic;
    if (counts.kana >= 4 && counts.kana * 4 >= others * 3) return true;
    const std::size_t signs = counts.binaryLows + (counts.ascii > 1 ? counts.ascii : 0);
    const bool isPairs = counts.bytePairs * 2 >= others && counts.indic * 4 < others * 3;
    return signs > 0 && signs * 50 >= others && !isPairs;
}

}  // namespace quillon::platform
