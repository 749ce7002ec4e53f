#include <cstdint>
#include <cstdlib>

#include "platform/TextApi.h"

namespace quillon::platform {

namespace {

/// More text than this tells nothing more. In bytes.
constexpr std::size_t kSampleSize = 128 * 1024;

bool IsPrintable(unsigned byte) {
    return (byte >= 0x20 && byte < 0x7F) || byte == '\t' || byte == '\r' || byte == '\n';
}

/// Holds the counts of bytes taken as little-endian UTF-16.
struct Counts {
    std::size_t printableBytes = 0;
    std::size_t asciiUnits = 0;
    std::uint64_t lowVariation = 0;
    std::uint64_t highVariation = 0;
    bool impossible = false;  // units that no text has
};

Counts CountUnits(std::string_view bytes) {
    Counts counts;
    int lastLow = 0, lastHigh = 0;
    bool afterHighSurrogate = false;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const int low = static_cast<unsigned char>(bytes[i]);
        const int high = static_cast<unsigned char>(bytes[i + 1]);
        const bool lowSurrogate = (high & 0xFC) == 0xDC;
        const bool nonCharacter = (high == 0 && low == 0) || (high == 0xFF && low >= 0xFE);
        counts.impossible |= nonCharacter || lowSurrogate != afterHighSurrogate;
        afterHighSurrogate = (high & 0xFC) == 0xD8;
        counts.printableBytes += IsPrintable(static_cast<unsigned>(low));
        counts.printableBytes += IsPrintable(static_cast<unsigned>(high));
        counts.asciiUnits += high == 0 && IsPrintable(static_cast<unsigned>(low));
        if (i > 0) {
            counts.lowVariation += static_cast<unsigned>(std::abs(low - lastLow));
            counts.highVariation += static_cast<unsigned>(std::abs(high - lastHigh));
        }
        lastLow = low;
        lastHigh = high;
    }
    counts.impossible |= afterHighSurrogate;
    return counts;
}

}  // namespace

bool LooksLikeUtf16(std::string_view bytes) {
    if (bytes.size() > kSampleSize) {
        // A sample must not end inside a surrogate pair.
        const bool inPair = (static_cast<unsigned char>(bytes[kSampleSize - 1]) & 0xFC) == 0xD8;
        bytes = bytes.substr(0, inPair ? kSampleSize - 2 : kSampleSize);
    }
    const std::size_t units = bytes.size() / 2;
    const Counts counts = CountUnits(bytes);
    if (units == 0 || counts.impossible) return false;
    if (counts.asciiUnits * 2 >= units) return true;
    // The letters of one script share their high bytes, or nearly so, while bytes
    // of an eight-bit text vary alike at both places and are mostly printable.
    const bool eightBit = counts.printableBytes * 4 >= 2 * units * 3;
    return !eightBit && counts.lowVariation > 2 * counts.highVariation;
}

}  // namespace quillon::platform
