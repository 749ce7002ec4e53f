#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "platform/RegistryApi.h"
#include "quillon/WindowsTypes.h"

namespace quillon::simulation {

/// A registry's hive in memory. Keys and values have names whose ASCII case does not
/// matter; a value is bytes without a type. Thread-safe.
class Registry {
public:
    // --- For those who use it, with the system's results ---

    /// Opens a key; null when there is none of that path, see LastError().
    HKEY Open(const std::string& path);
    void Close(HKEY key);
    /// Reads a value as RegQueryValueEx does: 0, ERROR_FILE_NOT_FOUND (2) for no such value,
    /// ERROR_INVALID_HANDLE (6) for no such key, ERROR_MORE_DATA (234) for too small a buffer.
    std::uint32_t Query(HKEY key, const std::string& name, void* buffer, std::uint32_t& size);

    /// Calls that end here; it lives as long as they do.
    platform::RegistryCalls Calls();

    // --- For those who set it up ---

    /// Removes all keys and values, closes what is open and forgets the failure.
    void Reset();
    /// Makes the key when it is missing.
    void SetValue(const std::string& path, const std::string& name, const std::string& bytes);
    /// A key stays when its last value goes.
    void RemoveValue(const std::string& path, const std::string& name);
    void RemoveKey(const std::string& path);
    /// Lets the next Open or Query fail with a code, once.
    void FailNext(std::uint32_t code);

private:
    using Values = std::map<std::string, std::string>;

    std::uint32_t TakeFailure();
    std::uint32_t Read(HKEY key, const std::string& name, void* buffer, std::uint32_t& size);

    std::mutex m_mutex;
    std::map<std::string, Values> m_keys;
    std::map<std::uintptr_t, std::string> m_open;
    std::uintptr_t m_lastHandle = 0;
    std::uint32_t m_failure = 0;
};

}  // namespace quillon::simulation
