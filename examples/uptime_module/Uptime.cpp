#include <quillon/ComScope.h>
#include <quillon/DescribedBinder.h>
#include <quillon/MethodParameterValidation.h>
#include <quillon/ModuleEntry.h>
#include <quillon/StringUtils.h>
#include <quillon/WmiConnector.h>

namespace {

using namespace quillon;

void Uptime(DescribedBinder& call, InvocationResult& result) {
    long long timeout = 0;
    call.Add("timeout", timeout);
    if (!call.Bind(result) || !MethodParameterValidation::InRange("timeout", timeout, 1, 600, result))
        return;  // result says which parameter is wrong

    const ComScope com;
    WmiConnector wmi;
    wmi.SetDeadline(static_cast<std::int32_t>(timeout * 1000));
    if (wmi.Connect("ROOT\\CIMV2") &&
        wmi.ExecuteQuery("SELECT CSName, LastBootUpTime FROM Win32_OperatingSystem", &result.resultTable))
        return;
    result.resultCode = InvocationResult::kSystemFailure;
    result.errorMessage = StringUtils::WideStringToNarrow(wmi.LastWmiError());
}

void Describe(IMethodMetadataBuilder& builder) {
    builder.Description("Tells since when the system runs.")
        .CreateParameter("timeout", typeid(long long))
        .Description("In seconds.")
        .OptionalValue(10LL)
        .BindParameter()
        .CreateColumn("CSName", typeid(std::string), false)
        .Description("Name of the machine.")
        .BindColumn()
        .CreateColumn("LastBootUpTime", typeid(std::string), false)
        .Description("ISO 8601.")
        .BindColumn();
}

std::unique_ptr<IModule> MakeUptimeModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Uptime.Read", IMethodMetadata::V5_0, &Describe, &Uptime));
    return MakeModule(std::move(methods));
}

}  // namespace

QUILLON_MODULE("Uptime", "1.0", MakeUptimeModule)
