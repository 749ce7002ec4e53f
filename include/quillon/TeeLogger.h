#pragma once

#include <cstdarg>
#include <vector>

#include "quillon/Export.h"
#include "quillon/LoggerBase.h"

namespace quillon {

/// Passes every entry to several loggers, in their order, each of which decides by its own level. It starts
/// at Trace, and its own level comes first. An entry is formatted once, and cut at 9,999 characters. When
/// loggers throw, the others get the entry all the same, and the first exception reaches the caller.
class QUILLON_API TeeLogger : public LoggerBase {
public:
    /// Does not own the loggers, which must live as long as this object and not be null.
    explicit TeeLogger(std::vector<ICLogger*> loggers);
    ~TeeLogger() override;

    /// Returns the path of the first logger that has one, or an empty text.
    const std::string& GetPath() const override;

private:
    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);

    std::vector<ICLogger*> m_loggers;
};

}  // namespace quillon
