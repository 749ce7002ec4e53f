#pragma once

#include <cstdarg>

#include "quillon/Export.h"
#include "quillon/LoggerBase.h"

namespace quillon {

/// Writes entries to standard output as "LEVEL text", for tools and tests that run without a log file. The
/// text is that of StringUtils::Format, of any length; without memory it may be the format alone. It has no
/// lock: entries that several threads write at once may interleave.
class QUILLON_API StdoutLogger : public LoggerBase {
public:
    /// Starts at Warn.
    StdoutLogger();
    ~StdoutLogger() override;

private:
    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);
};

}  // namespace quillon
