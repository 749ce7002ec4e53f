#pragma once

/// Windows Management Instrumentation: the system's headers on Windows; elsewhere the
/// part of their interfaces and calls that the library uses, behind which stands the
/// simulated repository.

#include <functional>
#include <optional>
#include <string>

#ifdef _WIN32
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <comdef.h>
#include <comutil.h>
#include <oleauto.h>
#include <wbemidl.h>
#else
#include "platform/ole/WbemTypes.h"
#endif

#include "platform/ole/ComPtr.h"
#include "quillon/WindowsTypes.h"

namespace quillon::platform {

using ATL::CComPtr;

/// The locator of the in-process server. The caller's thread has COM initialised.
HRESULT CreateWbemLocator(CComPtr<IWbemLocator>& locator);
/// NTLM, call-level authentication, impersonation, nothing else.
HRESULT SetWbemProxyBlanket(IWbemServices* services);

/// Loads the system's module of WMI messages, once; it stays loaded. False when it is
/// missing. One thread at a time.
bool LoadWbemMessages();
/// The message of that module, else the system's, without line breaks; nothing when
/// neither knows the code. LoadWbemMessages() has returned true.
std::optional<std::wstring> WbemMessage(HRESULT code);
/// The system's message alone.
std::optional<std::wstring> ComMessage(HRESULT code);

/// Throws what the system's own variant and text helpers throw, which outside Windows is
/// std::bad_alloc or std::runtime_error. On Windows it is a std::runtime_error too.
[[noreturn]] void RaiseComError(HRESULT code);

/// What stands behind the calls above.
struct WbemCalls {
    std::function<HRESULT(CComPtr<IWbemLocator>&)> createLocator;
    std::function<HRESULT(IWbemServices*)> setProxyBlanket;
    std::function<bool()> loadMessages;
    std::function<std::optional<std::wstring>(HRESULT)> wbemMessage;
    std::function<std::optional<std::wstring>(HRESULT)> comMessage;
};
/// The system's own; outside Windows the simulated repository of the machine.
WbemCalls SystemWbemCalls();
/// For tests, while no connector is at work. A member that is empty becomes the system's own.
void ReplaceWbemCalls(WbemCalls calls);

}  // namespace quillon::platform
