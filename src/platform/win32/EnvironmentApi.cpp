#include "platform/EnvironmentApi.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

std::optional<std::string> ReadVariable(const char* name) {
    constexpr DWORD kLongestValue = 32'767;
    std::string value(kLongestValue, '\0');
    ::SetLastError(ERROR_SUCCESS);  // an empty value is no failure
    const DWORD length = ::GetEnvironmentVariableA(name, value.data(), kLongestValue);
    if (length == 0 && ::GetLastError() != ERROR_SUCCESS) return std::nullopt;
    value.resize(length < kLongestValue ? length : 0);
    return value;
}

bool WriteVariable(const char* name, const char* value) {
    return ::SetEnvironmentVariableA(name, value) != 0;
}

}  // namespace quillon::platform
