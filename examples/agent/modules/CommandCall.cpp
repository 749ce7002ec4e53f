#include "modules/CommandCall.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "common/Failure.h"
#include "modules/TableLayout.h"
#include "quillon/ErrorHelper.h"
#include "quillon/MethodParameterValidation.h"
#include "quillon/ProcessUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

using Validation = MethodParameterValidation;
constexpr long long kNoLimit = std::numeric_limits<long long>::max();

/// The runner takes an empty directory for the agent's own, and so it would text that cannot be converted.
bool Check(const CommandCall& call, InvocationResult& result) {
    if (StringUtils::NarrowStringToWide(call.workingDirectory).empty() != call.workingDirectory.empty())
        return RefuseParameter("'workingDirectory' parameter must be UTF-8", result);
    return Validation::InRange("timeout", call.timeout, 0, std::numeric_limits<int>::max(), result) &&
           Validation::InRange("maxOutput", call.maxOutput, 0, kNoLimit, result);
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
    if (properties.processId == 0) {
        return "Could not run command '" + properties.command +
               "' because: " + ErrorHelper::GetErrorMessage(properties.startError);
    }
    if (properties.resultCode == ProcessUtils::kOutputLost) return "Not all of the output could be kept";
    return "Command ended with exit code " + std::to_string(properties.resultCode);
}

/// Lines are rows, of which the first ones may be empty.
bool HasOutput(const DataTable& table) {
    return std::any_of(table.begin(), table.end(), [](const VariantList& row) {
        return !row.Get(ProcessUtils::OutputColName).GetStringValue().empty();
    });
}

enum class End {
    Completed,
    Cut,  ///< the command was killed; the result's table holds what it had written
    Failed
};

/// Tells that the command took too long or that the host shuts down, beside what had been written.
End SetEarlyEnd(ProcessUtils::CmdProperties& properties, InvocationResult& result) {
    // The worker of a command that was not killed may still be writing to the properties.
    DataTable written = properties.killed ? std::move(properties.outputTable) : DataTable();
    if (properties.abortedOnShutdown) {
        ProcessUtils::SetCliShutdownAbortInvocationResult(result);
    } else {
        ProcessUtils::SetCliTimedOutInvocationResult(properties.timeoutSecs, result);
    }
    if (!HasOutput(written)) return End::Failed;
    result.resultTable = std::move(written);
    return End::Cut;
}

End Run(const CommandCall& call, bool lines, InvocationResult& result) {
    if (!Check(call, result)) return End::Failed;
    const auto properties = ToProperties(call, lines);
    const int code = ProcessUtils::RunCliCommand(properties);
    if (properties->abortedOnShutdown || properties->timedOut) return SetEarlyEnd(*properties, result);
    result.resultTable = std::move(properties->outputTable);
    if (code == 0 && !properties->outputTruncated) return End::Completed;
    properties->resultCode = code;  // also of a run that never got to a worker
    // It may also have been cut because there was no memory, of which the failure tells.
    if (call.maxOutput > 0 && properties->outputTruncated &&
        properties->outputBytes >= static_cast<std::uint64_t>(call.maxOutput))
        result.errorMessage = "Output reached the limit of " + std::to_string(call.maxOutput) + " bytes";
    ProcessUtils::SetSpecialErrorData(properties.get(), result, FailureText(*properties));
    // Without memory for the output there is no row.
    return properties->killed && !result.resultTable.Empty() ? End::Cut : End::Failed;
}

}  // namespace

void DescribeCommand(IMethodMetadataBuilder& builder, bool isOptional) {
    using Record = IMethodMetadata;
    builder.Flags({Record::ExecutesExternalProcess, Record::MayModifySystemState})
        .Warning("The command runs with all the rights of the agent.")
        .Note("A command that does not end with exit code 0 is a failed invocation with code 3.")
        .Note(
            "The command line is split by the Windows argument rules on every system; on Linux "
            "\"cmd /c REST\" hands REST to /bin/sh.");
    auto& command = builder.CreateParameter("command", typeid(std::string)).Description("The command line.");
    if (isOptional) command.OptionalValue("");
    command.BindParameter()
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
        .OptionalValue(CommandCall::kDefaultMaxOutput)
        .BindParameter();
}

void DescribeLayout(IMethodMetadataBuilder& builder) {
    builder
        .Note(
            "A column is NAME[:TYPE[*FACTOR]][:EXTENT]: TYPE is text (the default), integer, real, boolean "
            "or time; FACTOR multiplies a number; EXTENT is blank (the default, between blanks), space (up "
            "to the next blank), comma, semicolon, tab, quoted (comma-separated values), a number of "
            "characters or, for the last column, rest (of the line).")
        .Note(
            "The columns * are columns of text, aligned to the left, that the first line after those left "
            "out names; ** the same with names that are at least two blanks apart.")
        .CreateParameter("skip", typeid(long long))
        .Description("Header lines to leave out.")
        .OptionalValue(0)
        .BindParameter();
}

void AddBindings(DescribedBinder& binder, CommandCall& call) {
    binder.Add("command", call.command);
    binder.Add("timeout", call.timeout);
    binder.Add("workingDirectory", call.workingDirectory);
    binder.Add("maxOutput", call.maxOutput);
}

bool RunCommand(const CommandCall& call, bool lines, InvocationResult& result) {
    return Run(call, lines, result) == End::Completed;
}

bool RunCommandTable(const CommandCall& call, const std::string& columns, long long skip,
                     InvocationResult& result) {
    TableLayout layout;
    if (!layout.Read(columns, result)) return false;
    if (!Validation::InRange("skip", skip, 0, kNoLimit, result)) return false;
    const End end = Run(call, false, result);
    if (end == End::Failed) return false;
    const std::string output = result.resultTable.begin()->Get(ProcessUtils::OutputColName).GetStringValue();
    result.resultTable = layout.Parse(output, skip);
    return end == End::Completed;
}

}  // namespace quillon::agent
