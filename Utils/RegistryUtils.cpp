#include "quillon/RegistryUtils.h"

#include <cstdint>

#include "platform/RegistryApi.h"

namespace quillon {

bool RegistryUtils::ReadWindowsRegistryValue(const RegKey& key, const char* name, unsigned long& value) {
    std::uint32_t number = 0;
    std::uint32_t size = sizeof number;
    if (platform::QueryValue(key.handle, name, &number, size) != 0) return false;
    value = number;
    return true;
}

bool RegistryUtils::ReadWindowsRegistryValue(const RegKey& key, const char* name, std::string& value) {
    value.clear();
    std::uint32_t size = 0;
    if (platform::QueryValue(key.handle, name, nullptr, size) != 0 || size == 0) return true;
    value.resize(size);
    const bool isRead = platform::QueryValue(key.handle, name, value.data(), size) == 0;
    value.resize(isRead ? size : 0);  // it may have changed since
    if (value.ends_with('\0')) value.pop_back();
    return isRead;
}

}  // namespace quillon
