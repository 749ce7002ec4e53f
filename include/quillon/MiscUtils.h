#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/ICLogger.h"
#include "quillon/Version.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Tells facts of the process and of the system.
///
/// Every operation is thread-safe, except that while one changes the environment no thread may
/// read or change it. Entries go to the registered logger unless one is passed; nothing throws.
///
/// @code
/// bool missing = false;
/// const std::string home = MiscUtils::GetEnvVar("AGENT_HOME", &missing);
/// if (missing) std::cout << "not set" << '\n';
/// if (MiscUtils::OsVersion() >= Version("10.0")) std::cout << home << '\n';
/// MiscUtils::ThreadSleepMs(MiscUtils::GetRandomNumberInRange(100, 200));
/// @endcode
class QUILLON_API MiscUtils {
public:
    MiscUtils() = delete;

    /// Returns a variable's value, in the ANSI code page on Windows and as its bytes elsewhere.
    /// Returns the empty text and sets `*missing` to true when it is not set or empty;
    /// `missing` may be null. A failure other than 203, ERROR_ENVVAR_NOT_FOUND, is logged at
    /// Warn.
    static std::string GetEnvVar(const char* name, bool* missing);
    /// Sets a variable of this process; children inherit it. Returns false on failure and
    /// leaves the reason in the last error. A null `value` removes the variable.
    static bool SetEnvVar(const char* name, const char* value);
    /// Removes a variable; one that is not set is no failure.
    static void UnsetEnvVar(const char* name);

    /// Returns the version text of the process's executable, read once a process. When there is
    /// none, returns "1.2.3.4", and the call that found it out writes the Error entry "Could
    /// not get version; defaulting to '1.2.3.4'" on `logger`, which may be null.
    static std::string GetVersionNumber(ICLogger* logger);
    /// Returns the text FileVersion of a file's version resource, without blanks, with dots for
    /// commas ("1, 2, 3, 4" gives "1.2.3.4"), and cut after 20 characters; the empty text for a
    /// file that has none or cannot be read.
    static std::string GetFileVersionNumber(const std::string& path);
    /// Returns four parts of a version, 16 bits each, as one number in decimal text: "1.2"
    /// gives 281483566645248. Missing parts count as 0; a part above 65535 is not masked and
    /// carries into the part before it.
    static std::string PackVersionNumberString(const std::string& version);

    /// Returns a uniformly distributed number in [low, high]; 0 when `high` is 0, and `low`
    /// when it is not below `high`. Not fit for secrets.
    static long GetRandomNumberInRange(long low, long high);

    /// Returns the system's version: major, minor, build number and update revision (UBR), the
    /// last two from the registry. Both are 0 when its key cannot be opened with full access,
    /// so for a process without administrative rights.
    static Version OsVersion();
    /// Finds the module that holds `address` and stores it in `module`. Its reference count
    /// stays, so the caller releases nothing. Returns false, with the Error entry "Could not
    /// get DLL details because: ...", and leaves `module` alone, when there is none.
    static bool GetDllHandle(windows::HINSTANCE& module, void* address);
    /// Returns the byte order of the machine: true on all that the library is built for.
    static bool IsLittleEndian();
    /// Blocks the calling thread for `ms` milliseconds; returns at once for 0 or less. Nothing
    /// wakes it early, not the host's shutdown either.
    static void ThreadSleepMs(long long ms);
};

}  // namespace quillon
