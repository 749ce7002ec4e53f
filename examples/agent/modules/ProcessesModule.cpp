#include "modules/Modules.h"

#include <limits>
#include <utility>

#include "common/Failure.h"
#include "quillon/DescribedBinder.h"
#include "quillon/ProcessUtils.h"
#include "system/SystemFacts.h"

namespace quillon::agent {

namespace {

constexpr long long kAllProcesses = -1;

Variant CommandLine(unsigned long pid) {
    const std::string name = "CommandLine";
    std::string text;
    return ProcessUtils::GetCommandLineForProcess(pid, text) ? Variant(name, text)
                                                             : Variant::NullVariant(name);
}

Variant Executable(unsigned long pid) {
    return Variant::StringOrNullVariant("Executable", ReadExecutable(pid).value_or(""));
}

/// The library answers 0 when it cannot tell.
Variant PrivateWorkingSet(unsigned long pid) {
    const std::string name = "PrivateWorkingSet";
    const long long bytes = ProcessUtils::GetPrivateWorkingSetForProcess(static_cast<long>(pid));
    return bytes > 0 ? Variant(name, bytes) : Variant::NullVariant(name);
}

DataTable NoProcesses() {
    DataTable table;
    table.AddLongLongCol("Pid");
    table.AddStringCol("Executable");
    table.AddStringCol("CommandLine");
    table.AddLongLongCol("PrivateWorkingSet");
    return table;
}

void List(DescribedBinder& binder, InvocationResult& result) {
    long long wanted = 0;
    binder.Add("pid", wanted);
    if (!binder.Bind(result)) return;
    std::vector<unsigned long> ids;
    ProcessUtils::EnumerateProcessIds(ids);
    if (ids.empty()) {  // this process would be among them
        Fail(InvocationResult::kSystemFailure, "The processes cannot be listed", result);
        return;
    }
    result.resultTable = NoProcesses();
    for (const unsigned long id : ids) {
        const auto pid = static_cast<long long>(id);
        if (wanted != kAllProcesses && wanted != pid) continue;
        result.resultTable.AddRow(
            VariantList(Variant("Pid", pid), Executable(id), CommandLine(id), PrivateWorkingSet(id)));
    }
}

void DescribeList(IMethodMetadataBuilder& builder) {
    builder.Description("Lists the running processes, a row each.")
        .Note("A process that ends while it is looked at leaves nulls in its row.")
        .Example("quillon-agent run Processes.List pid=1")
        .CreateParameter("pid", typeid(long long))
        .Description("The only process to list; without such a process there is no row. -1 for all.")
        .OptionalValue(kAllProcesses)
        .BindParameter()
        .CreateColumn("Pid", typeid(long long), false)
        .Description("Identifier of the process.")
        .BindColumn()
        .CreateColumn("Executable", typeid(std::string), false)
        .Description("Full path of the file that it runs; null when that cannot be read.")
        .BindColumn()
        .CreateColumn("CommandLine", typeid(std::string), false)
        .Description("As it was started; null when that cannot be read.")
        .BindColumn()
        .CreateColumn("PrivateWorkingSet", typeid(long long), false)
        .Description("Bytes of memory that it shares with no other; null when they cannot be told.")
        .BindColumn();
}

}  // namespace

std::unique_ptr<IModule> MakeProcessesModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Processes.List", IMethodMetadata::V5_0, &DescribeList, &List));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
