#include "modules/Modules.h"

#include "modules/CommandCall.h"

namespace quillon::agent {

namespace {

/// The command's output, whole or by lines.
void RunAsGiven(DescribedBinder& binder, InvocationResult& result) {
    CommandCall call;
    bool lines = false;
    AddBindings(binder, call);
    binder.Add("lines", lines);
    if (binder.Bind(result)) RunCommand(call, lines, result);
}

/// The command's output, parsed into typed columns.
void Table(DescribedBinder& binder, InvocationResult& result) {
    CommandCall call;
    std::string columns;
    long long skip = 0;
    AddBindings(binder, call);
    binder.Add("columns", columns);
    binder.Add("skip", skip);
    if (binder.Bind(result)) RunCommandTable(call, columns, skip, result);
}

void DescribeRun(IMethodMetadataBuilder& builder) {
    DescribeCommand(builder);
    builder.Description("Runs a command line and answers with what it wrote.")
        .Example("quillon-agent run Commands.Run command=\"uname -sr\" lines=true")
        .CreateParameter("lines", typeid(bool))
        .Description("A row for every line instead of one row.")
        .OptionalValue(false)
        .BindParameter()
        .CreateColumn(ProcessUtils::ExitCodeColName, typeid(long long), false)
        .Description("The command's exit code.")
        .BindColumn()
        .CreateColumn(ProcessUtils::OutputColName, typeid(std::string), false)
        .Description("Standard output and standard error.")
        .BindColumn()
        .CreateColumn(ProcessUtils::LineNumberColName, typeid(long long), false)
        .Description("From 0.")
        .Note("With lines=true only.")
        .BindColumn();
}

void DescribeTable(IMethodMetadataBuilder& builder) {
    DescribeCommand(builder);
    builder.Description("Runs a command line and parses what it wrote into typed columns, a row a line.")
        .Example(
            "quillon-agent run Commands.Table command=\"ps -eo user,pid,rss,args\" skip=1 "
            "columns=\"USER PID:integer RSS:integer*1024 COMMAND:text:rest\"")
        .CreateParameter("columns", typeid(std::string))
        .Description("The columns, parted by blanks.")
        .BindParameter()
        .HasAdditionalColumns("Those of the parameter 'columns', with their types.");
    DescribeLayout(builder);
}

}  // namespace

std::unique_ptr<IModule> MakeCommandsModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Commands.Run", IMethodMetadata::V5_0, &DescribeRun, &RunAsGiven));
    methods.push_back(MakeMethod("Commands.Table", IMethodMetadata::V5_0, &DescribeTable, &Table));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
