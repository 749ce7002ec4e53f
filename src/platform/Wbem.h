#pragma once

/// Windows Management Instrumentation: the system's calls on Windows; elsewhere those of
/// the simulated repository.

#include <functional>
#include <optional>
#include <string>

#include "platform/ole/ComPtr.h"
#include "platform/ole/WbemTypes.h"
#include "quillon/WindowsTypes.h"

namespace quillon::platform {

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

/// Returns what WMI noted on this thread about its last failure (__ExtendedStatus), as "NAME: VALUE" parted
/// by
/// "; ", and forgets it; empty when there is nothing.
std::wstring TakeWbemErrorDetails();

/// Implements the calls above; a test replaces it.
struct WbemCalls {
    std::function<HRESULT(CComPtr<IWbemLocator>&)> createLocator;
    std::function<HRESULT(IWbemServices*)> setProxyBlanket;
    std::function<bool()> loadMessages;
    std::function<std::optional<std::wstring>(HRESULT)> wbemMessage;
    std::function<std::optional<std::wstring>(HRESULT)> comMessage;
    std::function<std::wstring()> takeErrorDetails;
};
/// The system's own; outside Windows the simulated repository of the machine.
WbemCalls SystemWbemCalls();
/// For tests. A member that is empty becomes the system's own. A connector that has a connection keeps it.
void ReplaceWbemCalls(WbemCalls calls);

}  // namespace quillon::platform
