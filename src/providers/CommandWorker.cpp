#include <atomic>
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

/// The size of an output that is limited is looked at this often.
constexpr std::chrono::milliseconds kSizeInterval{25};
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

/// Removes a character whose end was cut off.
void TrimCutCharacter(std::string& text) {
    constexpr std::size_t kLongestCut = 3;
    const std::size_t invalid = base::FindInvalidUtf8(text);
    if (invalid != std::string::npos && text.size() - invalid <= kLongestCut) text.resize(invalid);
}

/// Runs one command on the worker's thread.
class CommandWorker {
public:
    CommandWorker(const SharedProperties& props, tRunCmdSynch& synch)
        : m_shared(props), m_props(*props), m_logger(LoggerOf(*props)), m_synch(synch) {}

    int Run();

private:
    int Execute();
    std::optional<platform::ChildProcess> Start();
    int AwaitEnd(const platform::ChildProcess& process);
    int CodeOf(const platform::ChildProcess& process, std::uint32_t waitResult);
    void CheckSize();
    void CollectOutput(int code);
    /// `format` takes the command and the text of the last error.
    void LogFailure(const char* format);

    const SharedProperties& m_shared;
    ProcessUtils::CmdProperties& m_props;
    ICLogger& m_logger;
    tRunCmdSynch& m_synch;
    CommandOutput m_output;
    bool m_watchesSize = false;
};

int CommandWorker::Run() {
    m_logger.Debug("Running '%s'", LogText::OneLine(m_props.command).c_str());
    const int code = Execute();
    if (m_props.captureOutput) CollectOutput(code);
    if (m_props.outputTable.Empty()) SetOutputColumns(m_props.outputAsLines, m_props.outputTable);
    return code;
}

void CommandWorker::LogFailure(const char* format) {
    m_logger.Error(format, LogText::OneLine(m_props.command).c_str(),
                   StringUtils::GetLastErrorAsString().c_str());
}

int CommandWorker::Execute() {
    if (m_props.captureOutput && !m_output.Open()) {
        LogFailure("Could not open temporary output file for command '%s' because: %s");
        return ProcessUtils::kNotStarted;
    }
    if (auto started = Start()) {
        m_synch.process.emplace(*std::move(started));
    } else {
        LogFailure("Could not run command '%s' because: %s");
        return ProcessUtils::kNotStarted;
    }
    std::atomic_ref(m_props.processId).store(m_synch.process->Id());
    m_watchesSize = m_props.captureOutput && m_props.maxOutputBytes > 0;
    return AwaitEnd(*m_synch.process);
}

std::optional<platform::ChildProcess> CommandWorker::Start() {
    if (!CheckRequest(m_props)) return std::nullopt;
    platform::ProcessRequest request;
    request.command = m_props.command;
    request.workingDirectory = base::ToUtf8(m_props.workingDirectory);
    if (m_props.environment) request.environment = &*m_props.environment;
    if (m_props.captureOutput) request.output = &m_output.File();
    request.killableAsTree = m_props.killTree;
    platform::FileHandle input;
    if (m_props.standardInput) {
        input = platform::MakeInputFile(*m_props.standardInput);
        if (!input) return std::nullopt;
        request.input = &input;
    }
    return platform::ChildProcess::Start(request);
}

int CommandWorker::AwaitEnd(const platform::ChildProcess& process) {
    for (;;) {
        const std::optional limit = m_watchesSize ? std::optional(kSizeInterval) : std::nullopt;
        const std::uint32_t result = process.Wait(m_synch.abort, limit);
        if (result != platform::kWaitTimeout || !m_watchesSize) return CodeOf(process, result);
        CheckSize();
    }
}

int CommandWorker::CodeOf(const platform::ChildProcess& process, std::uint32_t waitResult) {
    switch (waitResult) {
        case platform::kWaitProcess: {
            const std::optional<std::int32_t> status = process.ExitStatus();
            if (!status) LogFailure("Could not get exit code of '%s' because: %s");
            return status.value_or(ProcessUtils::kNotStarted);
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

/// Ends a command that has written too much. A kill that fails is not tried again.
void CommandWorker::CheckSize() {
    if (m_output.Size() <= m_props.maxOutputBytes) return;
    m_watchesSize = false;
    m_logger.Warn("Command '%s' has written more than %llu bytes", LogText::OneLine(m_props.command).c_str(),
                  static_cast<unsigned long long>(m_props.maxOutputBytes));
    ProcessUtils::KillCommandProcess(m_shared);
}

void CommandWorker::CollectOutput(int code) {
    const std::uint64_t limit = m_props.maxOutputBytes;
    m_props.outputTruncated = limit > 0 && m_output.Size() > limit;
    m_props.outputBytes = m_output.Close(limit);
    std::string text = m_output.Read();
    if (m_props.outputTruncated) TrimCutCharacter(text);
    const std::string logged = code == 0 ? std::string() : StringUtils::Truncate(text, kLoggedOutput);
    AddOutputRows(std::move(text), code, m_props.outputAsLines, m_props.outputTable);
    m_output.Erase();
    if (code != 0) m_logger.Debug("Output from command: '%s'", logged.c_str());
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
    const std::lock_guard lock(synch->mutex);
    props->resultCode = code;
    synch->completed = true;
    synch->changed.notify_all();
}

}  // namespace quillon
