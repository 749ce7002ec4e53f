#include "modules/Modules.h"

#include <filesystem>

#include "modules/Describe.h"
#include "quillon/DescribedBinder.h"
#include "quillon/MethodMetadata.h"
#include "quillon/MiscUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/RuntimeEnv.h"
#include "quillon/SelfMetrics.h"
#include "quillon/ServiceLocator.h"
#include "system/SystemFacts.h"

namespace quillon::agent {

namespace {

std::string WorkingDirectory() {
    std::error_code error;
    const std::u8string path = std::filesystem::current_path(error).u8string();
    return std::string(path.begin(), path.end());
}

const char* RuntimeEnvironment() {
    static const char* const names[] = {"OutsideEngine", "AgentEngine", "AgentSubEngine", "NotSet"};
    return names[RuntimeEnv::GetInstance()->getEnvType()];
}

bool TakesNoParameters(DescribedBinder& binder, InvocationResult& result) { return binder.Bind(result); }

void Info(DescribedBinder& binder, InvocationResult& result) {
    if (!TakesNoParameters(binder, result)) return;
    VariantList row;
    row.Add("OsVersion", MiscUtils::OsVersion().to_string());
    row.Add(Variant::StringOrNullVariant("HostName", ReadHostName()));
    row.Add("AgentVersion", MiscUtils::GetVersionNumber(ServiceLocator::Get<ICLogger>()));
    row.Add("LibraryVersion", QUILLON_AGENT_LIBRARY_VERSION);
    row.Add(Variant::StringOrNullVariant("User", ReadAccountName()));
    row.Add(Variant::StringOrNullVariant("WorkingDirectory", WorkingDirectory()));
    row.Add("DataFolder", PathUtils::BuildFilenameRelativeToDynamicDataDirectory(""));
    row.Add("RuntimeEnvironment", RuntimeEnvironment());
    result.resultTable.AddRow(std::move(row));
}

void Metrics(DescribedBinder& binder, InvocationResult& result) {
    if (TakesNoParameters(binder, result)) result.resultTable = SelfMetrics();
}

/// For whoever calls the agent: what became of the texts of the call.
void Echo(const MethodParameters& parameters, InvocationResult& result) {
    result.resultTable.AddStringCol("Name");
    result.resultTable.AddStringCol("Type");
    result.resultTable.AddStringCol("Value");
    for (const Variant& value : parameters.scalars) {
        const char* const type = MetadataUtils::Type(value.GetType().hash_code());
        result.resultTable.AddRow(VariantList(Variant("Name", value.GetName()), Variant("Type", type),
                                              Variant("Value", value.AsString())));
    }
}

void AddText(IMethodMetadataBuilder& builder, const char* name, const char* description) {
    AddColumn(builder, name, typeid(std::string), description);
}

void DescribeInfo(IMethodMetadataBuilder& builder) {
    builder.Description("Tells where the agent runs, in one row.").Example("quillon-agent run System.Info");
    AddText(builder, "OsVersion", "Four numbers; on Linux those of the kernel.");
    AddText(builder, "HostName", "Name of the machine, without its domain on Windows.");
    AddText(builder, "AgentVersion", "Version that the agent's file carries.");
    AddText(builder, "LibraryVersion", "Version of the library that the agent was built with.");
    AddText(builder, "User", "Account that the agent runs as; null when it has no name.");
    AddText(builder, "WorkingDirectory", "In the system's own form.");
    AddText(builder, "DataFolder", "Where the agent keeps what changes; it need not exist.");
    AddText(builder, "RuntimeEnvironment", "Kind of the process: AgentEngine.");
}

void DescribeMetrics(IMethodMetadataBuilder& builder) {
    builder.Description("Tells what the agent's process costs now, a row a figure.")
        .Example("quillon-agent run System.Metrics --format json")
        .CreateColumn("Name", typeid(std::string), false)
        .Description("What is measured.")
        .BindColumn()
        .CreateColumn("Value", typeid(long long), false)
        .Description("Null when the system does not tell.")
        .BindColumn()
        .CreateColumn("Unit", typeid(std::string), false)
        .Description("What the value counts.")
        .BindColumn();
}

void DescribeEcho(IMethodMetadataBuilder& builder) {
    builder.CreateParameter("text", typeid(std::string)).OptionalValue("").BindParameter();
    builder.CreateParameter("integer", typeid(long long)).OptionalValue(0).BindParameter();
    builder.CreateParameter("float", typeid(double)).OptionalValue(0.0).BindParameter();
    builder.CreateParameter("boolean", typeid(bool)).OptionalValue(false).BindParameter();
    builder.CreateParameter("datetime", typeid(TimePoint)).OptionalValue(TimePoint()).BindParameter();
    builder.HasAdditionalParameters("Texts.");
    builder.Undocumented();  // the last: it ends the naming of things
}

}  // namespace

std::unique_ptr<IModule> MakeSystemModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("System.Info", IMethodMetadata::V5_0, &DescribeInfo, &Info));
    methods.push_back(MakeMethod("System.Metrics", IMethodMetadata::V5_0, &DescribeMetrics, &Metrics));
    methods.push_back(MakeMethod("System.Echo", IMethodMetadata::V5_0, &DescribeEcho, &Echo));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
