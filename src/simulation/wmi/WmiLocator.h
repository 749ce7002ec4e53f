#pragma once

#include "simulation/wmi/WbemObject.h"

namespace quillon::simulation {

/// Connects to the repository's namespaces, whoever asks.
class WmiLocator final : public WbemObject<IWbemLocator> {
public:
    using WbemObject::WbemObject;

    HRESULT ConnectServer(BSTR path, BSTR user, BSTR password, BSTR locale, LONG flags, BSTR authority,
                          IWbemContext* context, IWbemServices** services) override;

private:
    ~WmiLocator() override = default;
};

}  // namespace quillon::simulation
