#pragma once

#include "platform/Handle.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

struct LocalMemoryTraits {
    using Type = void*;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept {
        const DWORD code = ::GetLastError();
        ::LocalFree(value);
        ::SetLastError(code);
    }
};
/// Owns memory that the system has allocated with LocalAlloc.
using LocalMemory = Handle<LocalMemoryTraits>;

}  // namespace quillon::platform
