#include "common/ShownText.h"

#include <cstddef>

#include "quillon/LogText.h"

namespace quillon::agent {

std::string TerminalText(const std::string& text) { return LogText::OneLine(LogText::RepairUtf8(text)); }

std::string ShownText(const std::string& text) {
    constexpr std::size_t kLongest = 200;
    return TerminalText(LogText::TruncateUtf8(text, kLongest));
}

}  // namespace quillon::agent
