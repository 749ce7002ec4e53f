#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"
#include "quillon/VariantList.h"

namespace quillon {

/// A provider of the host, asked by method name. Any thread.
class QUILLON_API IProvider {
public:
    virtual ~IProvider();

    /// Fills `result`: its code (0 is success), message and table. The library passes
    /// null as `reserved`.
    virtual void InvokeMethod(const std::string& method, VariantList& parameters, InvocationResult& result,
                              void* reserved) = 0;
};

/// The host's providers by name. Any thread.
class QUILLON_API IProviderRegistry {
public:
    static const char* __InterfaceId() { return "VntItf_IProviderRegistry"; }

    virtual ~IProviderRegistry();

    /// The registry's own; null when there is none of that name.
    virtual IProvider* GetProvider(const std::string& name) = 0;
};

}  // namespace quillon
