#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/ICLogger.h"
#include "quillon/Version.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Facts of the process and of the system. Any thread, but for the environment,
/// which no other thread may change meanwhile. Entries go to the registered logger.
class QUILLON_API MiscUtils {
public:
    MiscUtils() = delete;

    /// Empty, with `missing` (may be null) true, when the variable is not set or empty.
    /// A failure of the system is logged at Warn. ANSI code page on Windows.
    static std::string GetEnvVar(const char* name, bool* missing);
    static bool SetEnvVar(const char* name, const char* value);
    static void UnsetEnvVar(const char* name);

    /// The version text of the process's executable, read once a process. "1.2.3.4",
    /// with an Error entry on `logger` (may be null), when it carries none.
    static std::string GetVersionNumber(ICLogger* logger);
    /// The version text of any file that carries one, else empty: at most 20 characters,
    /// "1, 2, 3, 4" as "1.2.3.4".
    static std::string GetFileVersionNumber(const std::string& path);
    /// Four parts of a version packed into one number, 16 bits each, as decimal text.
    static std::string PackVersionNumberString(const std::string& version);

    /// Uniform in [low, high]; 0 when `high` is 0, `low` when the range is empty.
    static long GetRandomNumberInRange(long low, long high);

    static Version OsVersion();
    /// The module that holds `address`; its reference count stays. False, with an
    /// Error entry, when there is none.
    static bool GetDllHandle(HINSTANCE& module, void* address);
    static bool IsLittleEndian();
    /// Returns at once for 0 or less.
    static void ThreadSleepMs(long long ms);
};

}  // namespace quillon
