#include "common/ShownText.h"

#include <cstddef>

namespace quillon::agent {

namespace {

constexpr std::size_t kLongest = 200;

bool IsInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

}  // namespace

std::string ShownText(const std::string& text) {
    std::string shown = text.substr(0, kLongest);
    if (shown.size() < text.size()) {
        std::size_t end = kLongest;
        while (end > 0 && IsInsideCharacter(text[end])) --end;
        shown = text.substr(0, end) + "...";
    }
    for (char& c : shown) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = '?';
    }
    return shown;
}

}  // namespace quillon::agent
