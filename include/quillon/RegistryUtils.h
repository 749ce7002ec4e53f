#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Names a registry key. Its handle belongs to whoever opened it, who also closes it; copies
/// share the handle.
struct RegKey {
    std::string path;  ///< UTF-8; for messages, nothing opens it
    windows::HKEY handle = nullptr;
};

/// Reads registry values by the caller's type; the type that is stored (REG_DWORD, REG_SZ, ...)
/// is not checked. Names and texts are in the ANSI code page. Every operation is thread-safe,
/// and nothing is logged. On Linux the registry is a simulation of the library's own.
///
/// @code
/// RegKey key{"SOFTWARE\\Example"};  // key.handle is to come from RegOpenKeyExA()
/// unsigned long revision = 0;
/// std::string owner;
/// if (!RegistryUtils::ReadWindowsRegistryValue(key, "UBR", revision)) std::cout << "absent" << '\n';
/// if (RegistryUtils::ReadWindowsRegistryValue(key, "Owner", owner)) std::cout << owner << '\n';
/// @endcode
class QUILLON_API RegistryUtils {
public:
    RegistryUtils() = delete;

    /// Reads a number of up to four bytes. Returns false, and leaves `value` alone, when the
    /// value is absent, larger (234, ERROR_MORE_DATA) or cannot be read; the code is not kept.
    static bool ReadWindowsRegistryValue(const RegKey& key, const char* name, unsigned long& value);
    /// Reads a text without one terminating NUL, if it has one. A value that is absent, empty
    /// or whose size cannot be had gives the empty text and true, so the result cannot tell
    /// them apart; false, and the empty text, means only that reading failed after the size was
    /// known.
    static bool ReadWindowsRegistryValue(const RegKey& key, const char* name, std::string& value);
};

}  // namespace quillon
