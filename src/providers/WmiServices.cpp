#include "providers/WmiServices.h"

#include "providers/WmiOwners.h"

namespace quillon {

WmiConnector::Services::Outcome WmiConnector::Services::Connect(const std::wstring& ns, bool mayGiveUp) {
    reference.Release();
    platform::CComPtr<IWbemLocator> locator;
    HRESULT result = platform::CreateWbemLocator(locator);
    if (FAILED(result)) return {Step::Locator, result};
    const OwnedBstr path = ToBstr(ns);
    const LONG flags = mayGiveUp ? WBEM_FLAG_CONNECT_USE_MAX_WAIT : 0;
    result =
        locator->ConnectServer(path.get(), nullptr, nullptr, nullptr, flags, nullptr, nullptr, &reference);
    if (FAILED(result)) return {Step::Namespace, result};
    result = platform::SetWbemProxyBlanket(reference);
    return {FAILED(result) ? Step::Security : Step::Connected, result};
}

}  // namespace quillon
