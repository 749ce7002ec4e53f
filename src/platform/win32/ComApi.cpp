#include "platform/ComApi.h"

#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <objbase.h>

namespace quillon {

std::int32_t platform::InitializeCom() { return ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); }

void platform::UninitializeCom() { ::CoUninitialize(); }

std::int32_t platform::InitializeComSecurity() {
    constexpr LONG kServicesOfItsChoice = -1;
    return ::CoInitializeSecurity(nullptr, kServicesOfItsChoice, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                  RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
}

}  // namespace quillon
