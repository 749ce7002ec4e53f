#pragma once

#include <cstdarg>
#include <memory>
#include <string>

#include "quillon/Export.h"
#include "quillon/LoggerBase.h"

namespace quillon {

/// Writes entries to a rolling file (5,242,880 bytes, 5 backups) as one JSON object a line, with the keys
/// "time" (ISO 8601, UTC), "level", "thread" (the system's number) and "message". A new file begins with
/// the entries that identify the agent. What CLogger says of its file holds for this one; an entry that is
/// lost is counted, and never fails its caller. Trouble with the file is told once on standard error.
class QUILLON_API JsonLinesLogger : public LoggerBase {
public:
    /// Starts at Info, without a file: entries are dropped until there is one.
    JsonLinesLogger();
    ~JsonLinesLogger() override;
    JsonLinesLogger(const JsonLinesLogger&) = delete;
    JsonLinesLogger& operator=(const JsonLinesLogger&) = delete;

    /// Sets the level, and opens the file when `path` is not null.
    void InitializeLogging(const char* path, Level level) override;
    /// Returns whether there is a file.
    bool IsInitialized() const override;
    /// Closes the file.
    void StopLogging() override;
    const std::string& GetPath() const override;
    /// Changes to another file. An empty or unchanged path changes nothing.
    void SetPath(const std::string& path) override;

private:
    struct Impl;

    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);

    std::unique_ptr<Impl> m_impl;
};

}  // namespace quillon
