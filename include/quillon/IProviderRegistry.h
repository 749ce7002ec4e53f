#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"
#include "quillon/VariantList.h"

namespace quillon {

/// Runs methods of one provider of the host by their names, for WayfarProviderWrapper. The host
/// implements it. Any thread may call it; what it throws reaches the library's caller.
class QUILLON_API IProvider {
public:
    virtual ~IProvider();

    /// Runs the method and fills `result`: the code (0 is success), the message and the table. It may
    /// change `parameters`, which the library does not use again. Names are UTF-8; `reserved` is null.
    virtual void InvokeMethod(const std::string& method, VariantList& parameters, InvocationResult& result,
                              void* reserved) = 0;
};

/// Finds the host's providers. The host implements it and registers it with ServiceLocator; any thread
/// may call it.
class QUILLON_API IProviderRegistry {
public:
    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IProviderRegistry"; }

    virtual ~IProviderRegistry();

    /// Returns the provider of that name, which the registry owns and which must live as long as the
    /// registry; null when there is none.
    virtual IProvider* GetProvider(const std::string& name) = 0;
};

}  // namespace quillon
