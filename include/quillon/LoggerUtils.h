#pragma once

#include "quillon/Export.h"

namespace quillon {

class ICLogger;

/// What every log file begins with. Any thread.
class QUILLON_API LoggerUtils {
public:
    LoggerUtils() = delete;

    /// Writes the block that identifies the agent at Info: the title, version and host name,
    /// rights, the build, the title. With `skipIfJustWritten` only the title when the last call wrote
    /// the block and asked for no skipping.
    static void LogCopyright(const char* title, ICLogger* logger, bool skipIfJustWritten);
};

}  // namespace quillon
