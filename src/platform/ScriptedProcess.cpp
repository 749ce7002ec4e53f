#include "platform/ScriptedProcess.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string_view>
#include <utility>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileContent.h"
#include "platform/OutputCapture.h"
#include "platform/Replaceable.h"

namespace quillon::platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Fits into a pipe from which all was read.
constexpr std::size_t kLargestPiece = 16 * 1024;

/// No system gives such identifiers: they are odd, and too large for Linux.
std::uint32_t NextId() {
    static std::atomic<std::uint32_t> last = 0x7F000001;
    return last.fetch_add(2);
}

Replaceable<CommandScripts>& Current() {
    static auto& scripts = *new Replaceable<CommandScripts>({});
    return scripts;
}

/// Its output is written by whoever waits for it: there is nobody else, and a pipe that nobody reads is
/// never written to.
class ScriptedProcess final : public RunningProcess {
public:
    ScriptedProcess(CommandScript script, const FileHandle* output, EventHandle killed)
        : m_script(std::move(script)),
          m_end(Clock::now() + m_script.delay),
          m_killed(std::move(killed)),
          m_output(output == nullptr || m_script.output.empty() ? FileHandle() : CopyOf(*output)),
          m_unwritten(m_output ? std::string_view(m_script.output) : std::string_view()) {}

    [[nodiscard]] std::uint32_t Id() const override { return m_id; }
    [[nodiscard]] std::uint32_t Wait(const EventHandle& event, OutputCapture* output,
                                     std::optional<milliseconds> limit) const override;
    [[nodiscard]] bool HasEnded() const override {
        const std::lock_guard lock(m_mutex);
        return IsOver();
    }
    [[nodiscard]] std::optional<ProcessEnd> End() const override {
        const std::lock_guard lock(m_mutex);
        return ProcessEnd{.status = m_killedWith.value_or(m_script.exitStatus)};
    }
    [[nodiscard]] KillOutcome Kill(const KillRequest& request) const override;

private:
    // Under the lock.
    bool IsOver() const {
        return m_killedWith || (!m_script.isEndless && m_unwritten.empty() && Clock::now() >= m_end);
    }
    bool WritePiece(OutputCapture* output) const;
    void CloseOutput() const;
    std::optional<milliseconds> TimeLeft(const std::optional<Clock::time_point>& deadline) const;

    const std::uint32_t m_id = NextId();
    const CommandScript m_script;
    const Clock::time_point m_end;
    const EventHandle m_killed;
    mutable std::mutex m_mutex;
    mutable FileHandle m_output;
    mutable std::string_view m_unwritten;
    mutable std::optional<std::int32_t> m_killedWith;
};

std::uint32_t ScriptedProcess::Wait(const EventHandle& event, OutputCapture* output,
                                    std::optional<milliseconds> limit) const {
    std::optional<Clock::time_point> deadline;
    if (limit) deadline = Clock::now() + *limit;
    for (;;) {
        std::optional<milliseconds> left;
        {
            const std::lock_guard lock(m_mutex);
            if (WritePiece(output)) return kWaitOutput;
            if (IsOver()) return kWaitProcess;
            left = TimeLeft(deadline);
        }
        const std::uint32_t result = AwaitEvents(m_killed, event, left);
        if (result == kWaitEvent || result == kWaitFailed) return result;
        if (result == kWaitTimeout && deadline && Clock::now() >= *deadline) return kWaitTimeout;
    }
}

/// Returns whether there is something to read.
bool ScriptedProcess::WritePiece(OutputCapture* output) const {
    if (m_unwritten.empty()) return false;
    const bool isRead = !m_killedWith && output != nullptr && !output->HasEnded();
    if (!isRead) {
        CloseOutput();
        return false;
    }
    if (output->Available() > 0) return true;
    const std::string_view piece = m_unwritten.substr(0, kLargestPiece);
    m_unwritten.remove_prefix(piece.size());
    if (!WriteAll(m_output, piece) || m_unwritten.empty()) CloseOutput();
    return true;
}

void ScriptedProcess::CloseOutput() const {
    m_unwritten = {};
    m_output.Reset();
}

std::optional<milliseconds> ScriptedProcess::TimeLeft(
    const std::optional<Clock::time_point>& deadline) const {
    std::optional<Clock::time_point> next = deadline;
    if (!m_script.isEndless) next = deadline ? std::min(*deadline, m_end) : m_end;
    if (!next) return std::nullopt;
    return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(*next - Clock::now()));
}

KillOutcome ScriptedProcess::Kill(const KillRequest& request) const {
    const std::lock_guard lock(m_mutex);
    if (IsOver()) {
        SetLastErrorCode(base::kAccessDenied);
        return {KillResult::NotKilled, {}};
    }
    m_killedWith = request.exitStatus;
    SignalEvent(m_killed);
    return {KillResult::Killed, {}};
}

std::shared_ptr<const RunningProcess> StartScript(CommandScript script, const ProcessRequest& request) {
    if (script.startError != 0) {
        SetLastErrorCode(script.startError);
        return nullptr;
    }
    EventHandle killed = CreateAutoResetEvent();
    if (!killed) return nullptr;
    return std::make_shared<const ScriptedProcess>(std::move(script), request.output, std::move(killed));
}

}  // namespace

void ReplaceCommands(CommandScripts scripts) { Current().Replace(std::move(scripts)); }

std::shared_ptr<const RunningProcess> StartProcess(const ProcessRequest& request) {
    if (const CommandScripts& scripts = Current().Get()) {
        if (auto script = scripts(request.command)) return StartScript(*std::move(script), request);
    }
    // Its place is made before the start, after which nothing may fail: the process would be nobody's.
    const auto place = std::make_shared<std::optional<ChildProcess>>();
    auto child = ChildProcess::Start(request);
    if (!child) return nullptr;
    return {place, &place->emplace(*std::move(child))};
}

}  // namespace quillon::platform
