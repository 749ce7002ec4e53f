#pragma once

#include <functional>
#include <string>

#include "quillon/DescribedBinder.h"
#include "quillon/IMethodMetadataBuilder.h"
#include "quillon/InvocationResult.h"
#include "quillon/WmiConnector.h"

namespace quillon::agent {

/// The parameters of every method that asks WMI.
struct WmiCall {
    static constexpr const char* kDefaultNamespace = "ROOT\\CIMV2";

    std::string ns;
    long long deadline = 0;
};

void DescribeWmi(IMethodMetadataBuilder& builder);
void AddBindings(DescribedBinder& binder, WmiCall& call);

/// Connects and runs the operation. False when a parameter is out of its range, one of the two
/// failed, or an object could not be read; the result then says why, in WMI's words.
bool RunWmi(const WmiCall& call, InvocationResult& result,
            const std::function<bool(WmiConnector&)>& operation);

}  // namespace quillon::agent
