#pragma once

#include "platform/Handle.h"
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <wincrypt.h>

namespace quillon::platform {

struct StoreTraits {
    using Type = HCERTSTORE;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept {
        const DWORD code = ::GetLastError();
        ::CertCloseStore(value, 0);
        ::SetLastError(code);
    }
};
using StoreHandle = Handle<StoreTraits>;

}  // namespace quillon::platform
