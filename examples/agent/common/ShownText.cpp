#include "common/ShownText.h"

#include <cstddef>

#include "quillon/LogText.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kLongest = 200;

bool IsInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// Returns how many bytes the character has that begins with a byte; 0 when none does.
std::size_t LengthFrom(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

/// Returns the length of the character at a place; 0 when the bytes there are no UTF-8.
std::size_t LengthAt(const std::string& text, std::size_t place) {
    const auto lead = static_cast<unsigned char>(text[place]);
    const std::size_t length = LengthFrom(lead);
    if (length == 0 || place + length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsInsideCharacter(text[place + i])) return 0;
    }
    const auto second = length > 1 ? static_cast<unsigned char>(text[place + 1]) : lead;
    const bool isOverlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool isNone = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F);
    return isOverlong || isNone ? 0 : length;
}

}  // namespace

std::string TerminalText(const std::string& text) {
    std::string valid;
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t length = LengthAt(text, place);
        valid += length == 0 ? "\xEF\xBF\xBD" : text.substr(place, length);
        place += length == 0 ? 1 : length;
    }
    return LogText::OneLine(valid);
}

std::string ShownText(const std::string& text) {
    std::string shown = text.substr(0, kLongest);
    if (shown.size() < text.size()) {
        std::size_t end = kLongest;
        while (end > 0 && IsInsideCharacter(text[end])) --end;
        shown = text.substr(0, end) + "...";
    }
    return TerminalText(shown);
}

}  // namespace quillon::agent
