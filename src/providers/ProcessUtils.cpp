#include "quillon/ProcessUtils.h"

#include <utility>

#include "providers/CommandRun.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

const char* const kShutdownText = "Aborted due to Agent shutdown";

void SetFailure(int exitCode, const std::string& text, InvocationResult& result) {
    VariantList row;
    row.Add(ProcessUtils::ExitCodeColName, exitCode);
    row.Add(ProcessUtils::OutputColName, text);
    result.resultTable = DataTable(row);
    result.errorMessage = text;
    result.resultCode = InvocationResult::kSystemFailure;
}

/// Returns null for a code that the program itself returned.
const char* SpecialText(int code) {
    switch (code) {
        case ProcessUtils::kTimedOut:
            return "Timed out";
        case ProcessUtils::kNotRun:
            return "Could not launch sub-process";
        case ProcessUtils::kExitCodeNotSet:
            return "Exit code not set";
        case ProcessUtils::kKilled:
            return "Sub-process killed (usually on time-out)";
        case ProcessUtils::kAborted:
            return kShutdownText;
        case ProcessUtils::kNotLoggedOn:
            return "User not logged on";
        default:
            return nullptr;
    }
}

}  // namespace

const char* const ProcessUtils::OutputColName = "Output";
const char* const ProcessUtils::ExitCodeColName = "ExitCode";
const char* const ProcessUtils::LineNumberColName = "LineNumber";
const int ProcessUtils::DefaultTimeoutSecs = 3600;

int ProcessUtils::RunCliCommand(std::shared_ptr<CmdProperties> props) {
    return RunCommand(props, [](std::function<void()> body) { return std::thread(std::move(body)); });
}

bool ProcessUtils::KillCommandProcess(const std::shared_ptr<CmdProperties>& props) {
    return KillCommand(*props, ScopeOf(*props));
}

void ProcessUtils::SetCliTimedOutInvocationResult(int timeoutSecs, InvocationResult& result) {
    SetFailure(kTimedOut, "Timed out after " + std::to_string(timeoutSecs) + " seconds", result);
}

void ProcessUtils::SetCliShutdownAbortInvocationResult(InvocationResult& result) {
    SetFailure(kAborted, kShutdownText, result);
}

void ProcessUtils::SetSpecialErrorData(const CmdProperties* props, InvocationResult& result,
                                       const std::string& fallback) {
    if (result.resultCode == 0) result.resultCode = InvocationResult::kSystemFailure;
    if (!result.errorMessage.empty()) return;
    const char* special = props == nullptr ? nullptr : SpecialText(props->resultCode);
    result.errorMessage = special == nullptr ? fallback : special;
}

}  // namespace quillon
