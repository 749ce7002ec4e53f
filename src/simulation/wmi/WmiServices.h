#pragma once

#include <string>
#include <string_view>

#include "simulation/wmi/WbemObject.h"

namespace quillon::simulation {

/// A connection to one namespace.
class WmiServices final : public WbemObject<IWbemServices> {
public:
    WmiServices(const std::shared_ptr<WmiState>& state, std::wstring nameSpace);

    HRESULT GetObject(BSTR path, LONG flags, IWbemContext* context, IWbemClassObject** object,
                      IWbemCallResult** result) override;
    HRESULT PutInstance(IWbemClassObject* instance, LONG flags, IWbemContext* context,
                        IWbemCallResult** result) override;
    HRESULT ExecQuery(BSTR language, BSTR query, LONG flags, IWbemContext* context,
                      IEnumWbemClassObject** objects) override;
    HRESULT ExecMethod(BSTR path, BSTR method, LONG flags, IWbemContext* context, IWbemClassObject* in,
                       IWbemClassObject** out, IWbemCallResult** result) override;

private:
    ~WmiServices() override = default;

    HRESULT Store(const WmiSchemaPtr& schema, WmiRowPtr row);

    const std::wstring m_nameSpace;
};

}  // namespace quillon::simulation
