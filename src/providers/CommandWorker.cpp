#include <atomic>
#include <chrono>
#include <exception>
#include <optional>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "providers/CommandOutput.h"
#include "providers/CommandRun.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

/// Between two attempts to end what writes too much.
constexpr std::chrono::milliseconds kRetryInterval{100};
constexpr unsigned long long kLoggedOutput = 1000;

bool IsText(const std::string& text) {
    return text.find('\0') == std::string::npos && base::FindInvalidUtf8(text) == std::string::npos;
}

bool IsVariable(const std::string& name, const std::string& value) {
    // Windows keeps the directories of drives in variables that begin with '='.
    return !name.empty() && name.find('=', 1) == std::string::npos && IsText(name) && IsText(value);
}

/// Refuses what the systems would misread in different ways.
bool CheckRequest(const ProcessUtils::CmdProperties& props) {
    if (base::FindInvalidUtf8(props.command) != std::string::npos) {
        platform::SetLastErrorCode(base::kNoUnicodeTranslation);
        return false;
    }
    bool valid = props.command.find('\0') == std::string::npos &&
                 props.workingDirectory.find(L'\0') == std::wstring::npos;
    if (props.environment) {
        for (const auto& [name, value] : *props.environment) valid = valid && IsVariable(name, value);
    }
    if (!valid) platform::SetLastErrorCode(base::kInvalidParameter);
    return valid;
}

/// Runs one command on the worker's thread.
class CommandWorker {
public:
    CommandWorker(const SharedProperties& props, tRunCmdSynch& synch)
        : m_props(*props), m_logger(LoggerOf(*props)), m_synch(synch), m_output(props->maxOutputBytes) {}

    int Run();

private:
    int Execute();
    int FailToStart(const char* format);
    tRunCmdSynch::Process Start();
    bool IsGivenUp();
    bool Publish(const tRunCmdSynch::Process& process);
    int AwaitEnd(const platform::RunningProcess& process);
    int CodeOf(const platform::RunningProcess& process, std::uint32_t waitResult);
    int CodeOf(const std::optional<platform::ProcessEnd>& end);
    void EndFlood();
    int CollectOutput(int code);
    int ReportLoss(std::uint32_t reason, int code);
    /// `format` takes the command and the text of the last error.
    void LogFailure(const char* format);

    ProcessUtils::CmdProperties& m_props;
    ICLogger& m_logger;
    tRunCmdSynch& m_synch;
    CommandOutput m_output;
    bool m_endsFlood = false;  // the output is past its limit, and its kill has not succeeded yet
    bool m_isFlood = false;
};

int CommandWorker::Run() {
    m_logger.Debug("Running '%s'", LogText::OneLine(m_props.command).c_str());
    int code = Execute();
    if (m_props.captureOutput) code = CollectOutput(code);
    if (m_props.outputTable.Empty()) SetOutputColumns(m_props.outputAsLines, m_props.outputTable);
    return code;
}

void CommandWorker::LogFailure(const char* format) {
    m_logger.Error(format, LogText::OneLine(m_props.command).c_str(),
                   StringUtils::GetLastErrorAsString().c_str());
}

int CommandWorker::FailToStart(const char* format) {
    m_props.startError = static_cast<int>(platform::LastError());
    LogFailure(format);
    return ProcessUtils::kNotStarted;
}

int CommandWorker::Execute() {
    if (m_props.captureOutput && !m_output.Open())
        return FailToStart("Could not open temporary output file for command '%s' because: %s");
    if (IsGivenUp()) return m_props.abortedOnShutdown ? ProcessUtils::kAborted : ProcessUtils::kTimedOut;
    const tRunCmdSynch::Process process = Start();
    if (!process) return FailToStart("Could not run command '%s' because: %s");
    m_props.startTime = std::chrono::time_point_cast<TimePoint::duration>(std::chrono::system_clock::now());
    m_output.Capture().CloseChildEnd();
    if (Publish(process)) KillCommand(m_props, ScopeOf(m_props));
    return AwaitEnd(*process);
}

/// Returns whether the caller has left before the start, and would have the process killed.
bool CommandWorker::IsGivenUp() {
    const std::lock_guard lock(m_synch.mutex);
    return m_synch.given && (m_props.killOnTimeout || m_props.abortedOnShutdown);
}

/// Lets the caller's thread kill the process; returns whether that has left it to the worker.
bool CommandWorker::Publish(const tRunCmdSynch::Process& process) {
    const std::lock_guard lock(m_synch.mutex);
    m_synch.process = process;
    std::atomic_ref(m_props.processId).store(process->Id());
    return m_synch.given && m_props.killOnTimeout;
}

tRunCmdSynch::Process CommandWorker::Start() {
    if (!CheckRequest(m_props)) return nullptr;
    platform::ProcessRequest request;
    request.command = m_props.command;
    request.workingDirectory = base::ToUtf8(m_props.workingDirectory);
    if (m_props.environment) request.environment = &*m_props.environment;
    if (m_props.captureOutput) request.output = &m_output.Capture().ChildEnd();
    request.killableAsTree = m_props.killTree || m_props.maxOutputBytes > 0;
    request.endsWithUs = m_props.killOnTimeout;
    request.canBeAsked = m_props.killGraceMs > 0;
    platform::FileHandle input;
    if (m_props.standardInput) {
        input = platform::MakeInputFile(*m_props.standardInput);
        if (!input) return nullptr;
        request.input = &input;
    }
    return platform::StartProcess(request);
}

int CommandWorker::AwaitEnd(const platform::RunningProcess& process) {
    platform::OutputCapture* const capture = m_props.captureOutput ? &m_output.Capture() : nullptr;
    for (;;) {
        const std::optional limit = m_endsFlood ? std::optional(kRetryInterval) : std::nullopt;
        const std::uint32_t result = process.Wait(m_synch.abort, capture, limit);
        if (result == platform::kWaitOutput) {
            m_output.TakePiece();
        } else if (result != platform::kWaitTimeout || !m_endsFlood) {
            return CodeOf(process, result);
        }
        if (m_output.IsPastLimit()) EndFlood();
    }
}

int CommandWorker::CodeOf(const std::optional<platform::ProcessEnd>& end) {
    if (!end) LogFailure("Could not get exit code of '%s' because: %s");
    m_props.endTime = std::chrono::time_point_cast<TimePoint::duration>(std::chrono::system_clock::now());
    if (!end) return ProcessUtils::kNotStarted;
    m_props.cpuTimeMs = static_cast<std::uint64_t>(end->cpuTime.count());
    m_props.peakMemoryBytes = end->peakMemory;
    m_props.endingSignal = end->signal;
    return end->status;
}

int CommandWorker::CodeOf(const platform::RunningProcess& process, std::uint32_t waitResult) {
    switch (waitResult) {
        case platform::kWaitProcess: {
            const int code = CodeOf(process.End());
            const std::lock_guard lock(m_synch.mutex);
            m_synch.process.reset();  // nobody can kill it any more
            const bool isAborted = m_props.abortedOnShutdown && code == ProcessUtils::kKilled;
            return isAborted ? ProcessUtils::kAborted : code;
        }
        case platform::kWaitEvent:
            return ProcessUtils::kAborted;
        case platform::kWaitFailed:
            LogFailure("Wait for events when monitoring command '%s' failed because: %s");
            return ProcessUtils::kNotRun;
        default:
            m_logger.Error("Wait for events when monitoring command '%s' unexpectedly returned %lu",
                           LogText::OneLine(m_props.command).c_str(), static_cast<unsigned long>(waitResult));
            return ProcessUtils::kNotRun;
    }
}

/// Ends a command that has written too much, and all that it started. A kill that fails is tried again.
void CommandWorker::EndFlood() {
    if (m_isFlood && !m_endsFlood) return;
    if (!m_isFlood) {
        m_logger.Warn("Command '%s' has written more than %llu bytes",
                      LogText::OneLine(m_props.command).c_str(),
                      static_cast<unsigned long long>(m_props.maxOutputBytes));
    }
    m_isFlood = true;
    const tRunCmdSynch::Process process = m_synch.RunningProcess();
    m_endsFlood = !process->HasEnded() && !KillCommand(m_props, platform::KillScope::Tree);
    m_output.Capture().Refuse();
}

int CommandWorker::CollectOutput(int code) {
    m_output.TakeRest();
    m_props.outputBytes = m_output.Size();
    m_props.outputTruncated = m_output.IsPastLimit();
    if (m_output.Fault() != 0) code = ReportLoss(m_output.Fault(), code);
    std::string logged;
    try {
        std::uint32_t codePage = m_props.outputCodePage;
        std::string text = m_output.TakeText(codePage);
        if (codePage != m_props.outputCodePage) {
            LogFailure("Could not read the output of command '%s' in its code page because: %s");
        }
        if (code != 0) logged = LogText::TruncateUtf8(text, kLoggedOutput);
        AddOutputRows(std::move(text), code, m_props.outputAsLines, m_props.outputTable);
    } catch (const std::exception&) {  // no memory, or no string is as long
        code = ReportLoss(base::kNotEnoughMemory, code);
    }
    if (code != 0) m_logger.Debug("Output from command: '%s'", LogText::OneLine(logged).c_str());
    return code;
}

/// Returns the code of a command whose output is not complete.
int CommandWorker::ReportLoss(std::uint32_t reason, int code) {
    m_props.outputTruncated = true;
    platform::SetLastErrorCode(reason);
    LogFailure("Could not keep the output of command '%s' because: %s");
    return code == 0 ? ProcessUtils::kOutputLost : code;
}

/// A logger of the host may throw as well.
void LogException(const ProcessUtils::CmdProperties& props, const char* what) noexcept {
    try {
        LoggerOf(props).Error("Cannot run command '%s' because: %s", LogText::OneLine(props.command).c_str(),
                              what);
    } catch (...) {
    }
}

}  // namespace

void RunCommandWorker(const SharedProperties& props, const std::shared_ptr<tRunCmdSynch>& synch) noexcept {
    int code = ProcessUtils::kNotRun;
    try {
        code = CommandWorker(props, *synch).Run();
    } catch (const std::exception& error) {
        LogException(*props, error.what());
    } catch (...) {
        LogException(*props, "unknown exception");
    }
    {
        const std::lock_guard lock(synch->mutex);
        props->resultCode = code;
        synch->completed = true;
    }
    synch->changed.notify_all();  // whoever wakes up finds the mutex free
}

}  // namespace quillon
