#include "quillon/LogText.h"

#include <algorithm>
#include <cstddef>

#include "base/DirectionMark.h"
#include "base/HexDigits.h"
#include "base/Utf.h"
#include "base/Utf8Cut.h"

namespace quillon {

namespace {

constexpr unsigned kDelete = 0x7F, kLatinLead = 0xC2, kArabicLead = 0xD8, kMarkLead = 0xE2;

unsigned ByteAt(std::string_view text, std::size_t place) {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
}

/// Returns whether a byte is, or begins, a character that may need an escape.
bool MayBeginEscape(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < ' ' || byte == kDelete || byte == kLatinLead || byte == kArabicLead || byte == kMarkLead;
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

/// Returns the code of a line or paragraph separator or a mark of direction at the front of a text; 0 for any
/// other character.
unsigned MarkAt(std::string_view text) {
    if (text.starts_with("\xE2\x80\xA8")) return 0x2028;
    if (text.starts_with("\xE2\x80\xA9")) return 0x2029;
    return base::DirectionMark(text);
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
        } else if (const unsigned mark = MarkAt(text.substr(place)); mark != 0) {
            AppendHex(result += "\\u", mark, 4);
            place += byte == kArabicLead ? 1 : 2;
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
