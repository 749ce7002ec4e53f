#include "providers/WmiServices.h"

#include <memory>

#include "providers/WmiOwners.h"

namespace quillon {

namespace {

/// What a connection that may be left behind needs and gives.
struct Attempt {
    platform::CComPtr<IWbemLocator> locator;
    OwnedBstr path;
    LONG flags = 0;
    platform::CComPtr<IWbemServices> reference;
    bool isReached = false;

    HRESULT Make() {
        const HRESULT result = ResultOf(locator->ConnectServer(path.get(), nullptr, nullptr, nullptr, flags,
                                                               nullptr, nullptr, &reference),
                                        reference);
        if (FAILED(result)) return result;
        isReached = true;
        return platform::SetWbemProxyBlanket(reference);
    }
};

}  // namespace

/// The locator is made on the caller's thread, where COM has to be initialised.
WmiConnector::Services::Outcome WmiConnector::Services::Connect(const std::wstring& ns, WmiCaller& caller) {
    reference.Release();
    const auto attempt = std::make_shared<Attempt>();
    const HRESULT located = ResultOf(platform::CreateWbemLocator(attempt->locator), attempt->locator);
    if (FAILED(located)) return {Step::Locator, located};
    attempt->path = ToBstr(ns);
    attempt->flags = caller.Limit().HasDeadline() ? WBEM_FLAG_CONNECT_USE_MAX_WAIT : 0;
    const HRESULT result = caller.Run([attempt] { return attempt->Make(); });
    if (caller.HasLeft()) return {Step::Namespace, result};
    reference = attempt->reference;
    if (SUCCEEDED(result)) return {Step::Connected, result};
    return {attempt->isReached ? Step::Security : Step::Namespace, result};
}

}  // namespace quillon
