#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "quillon/RegistryUtils.h"

namespace quillon::testkit {

/// Is the local machine's registry in memory, in the place of the system's for its life: the library's
/// reads reach it, on Windows and on Linux; those that a module makes by the system's own functions do
/// not. There is one at a time, and it is empty at first. Paths and names are case-insensitive.
/// Thread-safe, but for its beginning and end, when no key may be open.
///
/// @code
/// testkit::Registry registry;
/// registry.SetNumber("SOFTWARE\\Example", "Port", 8080);
/// unsigned long port = 0;
/// const RegKey key = registry.Open("SOFTWARE\\Example");
/// EXPECT_TRUE(RegistryUtils::ReadWindowsRegistryValue(key, "Port", port));
/// @endcode
class Registry {
public:
    Registry();
    ~Registry();
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    /// Set a value, as REG_DWORD, REG_SZ or bytes; the key is made when it is missing. Texts are in the
    /// ANSI code page, as RegistryUtils reads them.
    void SetNumber(const std::string& path, const std::string& name, std::uint32_t number);
    void SetText(const std::string& path, const std::string& name, const std::string& text);
    void SetBytes(const std::string& path, const std::string& name, std::string_view bytes);
    /// Remove a value or a key; what is not there is no failure.
    void RemoveValue(const std::string& path, const std::string& name);
    void RemoveKey(const std::string& path);
    /// Lets the next opening of a key or reading of a value fail with a Windows code, once.
    void FailNext(std::uint32_t code);

    /// Opens a key; its handle is null when there is none. It is closed when the registry ends.
    RegKey Open(const std::string& path);
};

}  // namespace quillon::testkit
