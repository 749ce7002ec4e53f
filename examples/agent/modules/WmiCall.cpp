#include "modules/WmiCall.h"

#include "common/Failure.h"
#include "modules/Waiting.h"
#include "quillon/ComScope.h"
#include "quillon/MethodParameterValidation.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

void DescribeWmi(IMethodMetadataBuilder& builder) {
    builder.CreateParameter("namespace", typeid(std::string))
        .Description("The namespace.")
        .OptionalValue(WmiCall::kDefaultNamespace)
        .BindParameter()
        .CreateParameter("deadline", typeid(long long))
        .Description("Seconds that connecting, and then the operation, may take; 0 for no limit.")
        .OptionalValue(0)
        .BindParameter();
}

void AddBindings(DescribedBinder& binder, WmiCall& call) {
    binder.Add("namespace", call.ns);
    binder.Add("deadline", call.deadline);
}

bool RunWmi(const WmiCall& call, InvocationResult& result,
            const std::function<bool(WmiConnector&)>& operation) {
    if (!MethodParameterValidation::InRange("deadline", call.deadline, 0, kLongestWait, result)) return false;
    const ComScope com;
    if (!com) return Fail(InvocationResult::kSystemFailure, "COM cannot be initialised", result);
    WmiConnector connector;
    connector.SetUint64Policy(WmiConnector::Uint64Policy::Text);
    connector.SetValuePolicy(WmiConnector::ValuePolicy::Type);
    connector.SetUpdatePolicy(WmiConnector::UpdatePolicy::NullsAndArrays);
    connector.SetDiagnostics(true);
    connector.SetDeadline(static_cast<std::int32_t>(call.deadline * 1000));
    const bool isDone = connector.Connect(call.ns) && operation(connector);
    // An object that could not be read is missing in an answer which is given all the same.
    if (isDone && connector.LastWmiErrorCode() == 0) return true;
    return Fail(InvocationResult::kSystemFailure, StringUtils::WideStringToNarrow(connector.LastWmiError()),
                result);
}

}  // namespace quillon::agent
