#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

inline constexpr unsigned int kMaximumDumpIndent = 40;

inline std::string DumpIndent(unsigned int blanks) {
    return std::string(std::min(blanks, kMaximumDumpIndent), ' ');
}

/// Returns the indent of the next level, which is limited.
inline unsigned int InnerIndent(unsigned int blanks) { return std::min(blanks, kMaximumDumpIndent) + 1; }

/// `logger`, else the registered one; null when there is none.
inline ICLogger* LoggerOrRegistered(ICLogger* logger) {
    return logger != nullptr ? logger : detail::RegisteredLoggerIfAny();
}

/// Returns the longest beginning of at most `most` bytes that cuts no character of UTF-8.
inline std::string_view CutToBytes(std::string_view text, std::size_t most) {
    if (text.size() <= most) return text;
    std::size_t end = most;
    while (end > 0 && most - end < 3 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    const bool isCharacter = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
    return text.substr(0, isCharacter ? end : most);
}

/// Writes a line at Debug, or to standard error when `logger` is null.
inline void WriteDumpLine(ICLogger* logger, const std::string& line) {
    if (logger != nullptr) {
        logger->Debug("%s", LogText::OneLine(line).c_str());
    } else {
        std::fprintf(stderr, "%s\n", line.c_str());
    }
}

}  // namespace quillon
