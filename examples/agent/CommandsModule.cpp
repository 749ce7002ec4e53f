#include "CommandsModule.h"

#include <limits>
#include <memory>

#include "TableLayout.h"
#include "quillon/ParameterBinder.h"
#include "quillon/ProcessUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr std::int32_t kBadParameter = 2;
constexpr long long kDefaultMaxOutput = 64 * 1024 * 1024;

/// The parameters of both methods.
struct CommandCall {
    std::string command;
    long long timeout = ProcessUtils::DefaultTimeoutSecs;
    std::string workingDirectory;
    long long maxOutput = kDefaultMaxOutput;
};

/// What both methods declare first.
void DescribeCommand(IMethodMetadataBuilder& builder) {
    using Record = IMethodMetadata;
    builder.Flags({Record::ExecutesExternalProcess, Record::MayModifySystemState})
        .Warning("The command runs with all the rights of the agent.")
        .Note("A command that does not end with exit code 0 is a failed invocation with code 3.")
        .Note(
            "The command line is split by the Windows argument rules on every system; on Linux "
            "\"cmd /c REST\" hands REST to /bin/sh.")
        .CreateParameter("command", typeid(std::string))
        .Description("The command line.")
        .BindParameter()
        .CreateParameter("timeout", typeid(long long))
        .Description("Seconds after which the command is killed with all that it started; 0 for never.")
        .OptionalValue(ProcessUtils::DefaultTimeoutSecs)
        .BindParameter()
        .CreateParameter("workingDirectory", typeid(std::string))
        .Description("Folder to run in; empty for the agent's own.")
        .OptionalValue("")
        .BindParameter()
        .CreateParameter("maxOutput", typeid(long long))
        .Description("Bytes of output after which the command is killed; 0 for no limit.")
        .OptionalValue(kDefaultMaxOutput)
        .BindParameter();
}

void AddBindings(ParameterBinder& binder, CommandCall& call) {
    binder.AddMandatoryBinding("command", call.command);
    binder.AddOptionalBinding("timeout", call.timeout);
    binder.AddOptionalBinding("workingDirectory", call.workingDirectory);
    binder.AddOptionalBinding("maxOutput", call.maxOutput);
}

bool Refuse(const std::string& message, InvocationResult& result) {
    result.resultCode = kBadParameter;
    result.errorMessage = message;
    return false;
}

bool InRange(const char* name, long long value, long long maximum, InvocationResult& result) {
    if (value >= 0 && value <= maximum) return true;
    return Refuse(std::string("'") + name + "' parameter must be from 0 to " + std::to_string(maximum),
                  result);
}

/// The runner takes an empty folder for the agent's own, and so it would text that cannot be converted.
bool Check(const CommandCall& call, InvocationResult& result) {
    if (StringUtils::NarrowStringToWide(call.workingDirectory).empty() != call.workingDirectory.empty())
        return Refuse("'workingDirectory' parameter must be UTF-8", result);
    return InRange("timeout", call.timeout, std::numeric_limits<int>::max(), result) &&
           InRange("maxOutput", call.maxOutput, std::numeric_limits<long long>::max(), result);
}

std::shared_ptr<ProcessUtils::CmdProperties> ToProperties(const CommandCall& call, bool lines) {
    auto properties = std::make_shared<ProcessUtils::CmdProperties>();
    properties->command = call.command;
    properties->logger = ServiceLocator::Get<ICLogger>();
    properties->outputAsLines = lines;
    properties->captureOutput = true;
    properties->timeoutSecs = static_cast<int>(call.timeout);
    properties->killOnTimeout = true;
    properties->killTree = true;
    properties->maxOutputBytes = static_cast<std::uint64_t>(call.maxOutput);
    properties->workingDirectory = StringUtils::NarrowStringToWide(call.workingDirectory);
    return properties;
}

/// The reason for a run that has no special code.
std::string FailureText(const ProcessUtils::CmdProperties& properties) {
    if (properties.processId == 0) return "Could not run command '" + properties.command + "'";
    return "Command ended with exit code " + std::to_string(properties.resultCode);
}

/// Runs the command and puts its rows into the result. False when it did not end
/// with exit code 0; the result then says why.
bool Execute(const CommandCall& call, bool lines, InvocationResult& result) {
    const auto properties = ToProperties(call, lines);
    const int code = ProcessUtils::RunCliCommand(properties);
    // First the endings after which a worker may still be writing to the properties.
    if (properties->abortedOnShutdown) {
        ProcessUtils::SetCliShutdownAbortInvocationResult(result);
        return false;
    }
    if (properties->timedOut) {
        ProcessUtils::SetCliTimedOutInvocationResult(properties->timeoutSecs, result);
        return false;
    }
    result.resultTable = std::move(properties->outputTable);
    if (code == 0 && !properties->outputTruncated) return true;
    properties->resultCode = code;  // also of a run that never got to a worker
    if (properties->outputTruncated)
        result.errorMessage = "Output reached the limit of " + std::to_string(call.maxOutput) + " bytes";
    ProcessUtils::SetSpecialErrorData(properties.get(), result, FailureText(*properties));
    return false;
}

/// The command's output, whole or by lines.
void Run(const MethodParameters& parameters, InvocationResult& result) {
    CommandCall call;
    bool lines = false;
    ParameterBinder binder(parameters, false, false);
    AddBindings(binder, call);
    binder.AddOptionalBinding("lines", lines);
    if (!binder.Bind(result) || !Check(call, result)) return;
    Execute(call, lines, result);
}

/// The command's output, parsed into typed columns.
void Table(const MethodParameters& parameters, InvocationResult& result) {
    CommandCall call;
    std::string columns;
    long long skip = 0;
    ParameterBinder binder(parameters, false, false);
    AddBindings(binder, call);
    binder.AddMandatoryBinding("columns", columns);
    binder.AddOptionalBinding("skip", skip);
    TableLayout layout;
    if (!binder.Bind(result) || !Check(call, result) || !layout.Read(columns, result)) return;
    if (!InRange("skip", skip, std::numeric_limits<long long>::max(), result)) return;
    if (!Execute(call, false, result)) return;
    const std::string output = result.resultTable.begin()->Get(ProcessUtils::OutputColName).GetStringValue();
    result.resultTable = layout.Parse(output, skip);
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
        .Note(
            "A column is NAME[:TYPE[*FACTOR]][:EXTENT]: TYPE is text (the default), integer or boolean; "
            "FACTOR multiplies an integer; EXTENT is space (the default, up to the next blank) or, for "
            "the last column, rest (of the line).")
        .CreateParameter("columns", typeid(std::string))
        .Description("The columns, parted by blanks.")
        .BindParameter()
        .CreateParameter("skip", typeid(long long))
        .Description("Header lines to leave out.")
        .OptionalValue(0)
        .BindParameter()
        .HasAdditionalColumns("Those of the parameter 'columns', with their types.");
}

}  // namespace

CommandsModule::CommandsModule() {
    m_methods.push_back(MakeMethod("Commands.Run", IMethodMetadata::V5_0, &DescribeRun, &Run));
    m_methods.push_back(MakeMethod("Commands.Table", IMethodMetadata::V5_0, &DescribeTable, &Table));
}

}  // namespace quillon::agent
