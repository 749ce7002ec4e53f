#include "quillon/LogText.h"

#include <algorithm>
#include <cstddef>

#include "base/HexDigits.h"
#include "base/Utf.h"
#include "base/Utf8Cut.h"

namespace quillon {

namespace {

constexpr unsigned kDelete = 0x7F, kLatinLead = 0xC2, kMarkLead = 0xE2;

unsigned ByteAt(std::string_view text, std::size_t place) {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
}

/// Returns whether a byte is, or begins, a character that may need an escape.
bool MayBeginEscape(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < ' ' || byte == kDelete || byte == kLatinLead || byte == kMarkLead;
}

void AppendHex(std::string& result, unsigned value, unsigned digits) {
    constexpr unsigned kBits = 4, kMask = 15;
    while (digits-- > 0) result += base::kUpperDigits[value >> (digits * kBits) & kMask];
}

void AppendControl(std::string& result, unsigned control) {
    const char* const known = control == '\n'   ? "\\n"
                              : control == '\r' ? "\\r"
                              : control == '\t' ? "\\t"
                                                : "";
    result += known;
    if (*known != '\0') return;
    result += "\\x";
    AppendHex(result, control, 2);
}

/// Returns the code of a separator or mark of direction, which take three bytes; 0 for any other character.
unsigned MarkAt(std::string_view text, std::size_t place) {
    constexpr unsigned kPayload = 0x3F, kBits = 6, kBlock = 0x2000;
    if (ByteAt(text, place) != kMarkLead) return 0;
    const unsigned code =
        kBlock | (ByteAt(text, place + 1) & kPayload) << kBits | (ByteAt(text, place + 2) & kPayload);
    const bool isSeparatorOrTurn = code >= 0x2028 && code <= 0x202E;
    const bool isIsolate = code >= 0x2066 && code <= 0x2069;
    const bool isMark = code == 0x200E || code == 0x200F;
    return isSeparatorOrTurn || isIsolate || isMark ? code : 0;
}

}  // namespace

std::string LogText::OneLine(std::string_view text) {
    constexpr unsigned kFirstC1 = 0x80, kLastC1 = 0x9F;
    const auto suspect =
        static_cast<std::size_t>(std::find_if(text.begin(), text.end(), &MayBeginEscape) - text.begin());
    std::string result(text.substr(0, suspect));
    for (std::size_t place = suspect; place < text.size(); ++place) {
        const unsigned byte = ByteAt(text, place), next = ByteAt(text, place + 1);
        if (byte < ' ' || byte == kDelete) {
            AppendControl(result, byte);
        } else if (byte == kLatinLead && next >= kFirstC1 && next <= kLastC1) {
            AppendControl(result, next);
            ++place;
        } else if (const unsigned mark = MarkAt(text, place); mark != 0) {
            AppendHex(result += "\\u", mark, 4);
            place += 2;
        } else {
            result += text[place];
        }
    }
    return result;
}

std::string LogText::RepairUtf8(std::string_view text) { return base::RepairUtf8(text); }

std::string LogText::TruncateUtf8(std::string_view text, std::size_t maximum) {
    std::string kept(base::CutUtf8(text, maximum));
    return kept.size() < text.size() ? kept + "..." : kept;
}

}  // namespace quillon
