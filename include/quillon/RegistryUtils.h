#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// A registry key that its owner opened and will close.
struct RegKey {
    std::string path;  ///< for people
    HKEY handle = nullptr;
};

/// Typed reads of registry values. The stored type is not checked. ANSI code page.
/// Nothing is logged.
class QUILLON_API RegistryUtils {
public:
    RegistryUtils() = delete;

    /// Four bytes; false when the value is absent or larger.
    static bool ReadWindowsRegistryValue(const RegKey& key, const char* name, unsigned long& value);
    /// An absent value is an empty text and true.
    static bool ReadWindowsRegistryValue(const RegKey& key, const char* name, std::string& value);
};

}  // namespace quillon
