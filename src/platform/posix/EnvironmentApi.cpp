#include "platform/EnvironmentApi.h"

#include <cerrno>
#include <cstdlib>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

std::optional<std::string> ReadVariable(const char* name) {
    const char* const value = name == nullptr ? nullptr : std::getenv(name);
    if (value != nullptr) return value;
    SetLastErrorCode(base::kVariableNotFound);
    return std::nullopt;
}

bool WriteVariable(const char* name, const char* value) {
    if (name == nullptr) {
        errno = EINVAL;
        return FailWithErrno();
    }
    const int result = value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1);
    return result == 0 || FailWithErrno();
}

}  // namespace quillon::platform
