#pragma once

#include "quillon/Export.h"

namespace quillon {

class ICLogger;

/// Writes the lines that every log file begins with. Thread-safe.
class QUILLON_API LoggerUtils {
public:
    LoggerUtils() = delete;

    /// Writes five Info entries that identify the agent: the title, its version and the host name, the
    /// copyright, the build, the title again. With `skipIfJustWritten` only the first one is written when
    /// the last call wrote all five and asked for no skipping. `logger` must not be null.
    static void LogCopyright(const char* title, ICLogger* logger, bool skipIfJustWritten);
};

}  // namespace quillon
