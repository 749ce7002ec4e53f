#include "platform/ModuleApi.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <string_view>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

std::optional<std::string> ExecutablePath() {
    constexpr std::string_view kReplaced = " (deleted)";
    std::string buffer(PATH_MAX, '\0');
    const ::ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length < 0) {
        FailWithErrno();
        return std::nullopt;
    }
    buffer.resize(static_cast<std::size_t>(length));
    // The executable may have been replaced by a newer one while it runs.
    if (buffer.ends_with(kReplaced) && ::access(buffer.c_str(), F_OK) != 0) {
        buffer.resize(buffer.size() - kReplaced.size());
    }
    return LibraryPath(buffer);
}

HINSTANCE ModuleOfAddress(void* address) {
    Dl_info module{};
    if (::dladdr(address, &module) != 0) return reinterpret_cast<HINSTANCE>(module.dli_fbase);
    SetLastErrorCode(base::kModuleNotFound);
    return nullptr;
}

}  // namespace quillon::platform
