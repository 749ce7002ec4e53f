#include "platform/Wbem.h"

#include <utility>

#include "platform/Replaceable.h"

namespace quillon::platform {

namespace {

Replaceable<WbemCalls>& Current() {
    // Never destroyed: threads may ask while the process ends.
    static auto& calls = *new Replaceable<WbemCalls>(SystemWbemCalls());
    return calls;
}

const WbemCalls& Calls() { return Current().Get(); }

template <class Function>
void TakeIfGiven(Function& target, Function& given) {
    if (given) target = std::move(given);
}

}  // namespace

HRESULT CreateWbemLocator(CComPtr<IWbemLocator>& locator) { return Calls().createLocator(locator); }

HRESULT SetWbemProxyBlanket(IWbemServices* services) { return Calls().setProxyBlanket(services); }

bool LoadWbemMessages() { return Calls().loadMessages(); }

std::optional<std::wstring> WbemMessage(HRESULT code) { return Calls().wbemMessage(code); }

std::optional<std::wstring> ComMessage(HRESULT code) { return Calls().comMessage(code); }

std::wstring TakeWbemErrorDetails() { return Calls().takeErrorDetails(); }

void ReplaceWbemCalls(WbemCalls calls) {
    WbemCalls all = SystemWbemCalls();
    TakeIfGiven(all.createLocator, calls.createLocator);
    TakeIfGiven(all.setProxyBlanket, calls.setProxyBlanket);
    TakeIfGiven(all.loadMessages, calls.loadMessages);
    TakeIfGiven(all.wbemMessage, calls.wbemMessage);
    TakeIfGiven(all.comMessage, calls.comMessage);
    TakeIfGiven(all.takeErrorDetails, calls.takeErrorDetails);
    Current().Replace(std::move(all));
}

}  // namespace quillon::platform
