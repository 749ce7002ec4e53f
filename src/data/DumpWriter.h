#pragma once

#include <algorithm>
#include <cstdio>
#include <string>

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

/// Writes a line at Debug, or to standard error when `logger` is null.
inline void WriteDumpLine(ICLogger* logger, const std::string& line) {
    if (logger != nullptr) {
        logger->Debug("%s", LogText::OneLine(line).c_str());
    } else {
        std::fprintf(stderr, "%s\n", line.c_str());
    }
}

}  // namespace quillon
