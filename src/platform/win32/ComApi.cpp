#include "platform/ComApi.h"

#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <objbase.h>

namespace quillon::platform {

std::int32_t InitializeCom() { return ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); }

void UninitializeCom() { ::CoUninitialize(); }

std::int32_t InitializeComSecurity() {
    constexpr LONG kServicesOfItsChoice = -1;
    return ::CoInitializeSecurity(nullptr, kServicesOfItsChoice, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                  RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
}

}  // namespace quillon::platform
