#include "common/ShownText.h"

#include <cstddef>

#include "quillon/LogText.h"

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
    return LogText::OneLine(shown);
}

}  // namespace quillon::agent
