#include "providers/CommandRun.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>
#include <system_error>

#include "platform/ThreadApi.h"
#include "providers/SilentLogger.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/IShutdownMonitor.h"
#include "quillon/IShutdownNotifier.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using Clock = std::chrono::steady_clock;

/// The caller looks at a monitor without a notifier this often.
constexpr std::chrono::milliseconds kLookInterval{100};

/// Tells a run of the host's shutdown, where the host has a notifier.
class ShutdownWatch {
public:
    explicit ShutdownWatch(const std::shared_ptr<tRunCmdSynch>& synch) {
        if (m_notifier == nullptr) return;
        m_registration = m_notifier->OnShutdown([synch] {
            const std::lock_guard lock(synch->mutex);
            synch->shutdown = true;
            synch->changed.notify_all();
        });
    }
    ShutdownWatch(const ShutdownWatch&) = delete;
    ShutdownWatch& operator=(const ShutdownWatch&) = delete;
    ~ShutdownWatch() {
        if (m_notifier != nullptr) m_notifier->ForgetCallback(m_registration);
    }

    [[nodiscard]] bool MustLook() const { return m_notifier == nullptr && m_monitor != nullptr; }
    [[nodiscard]] bool IsRequested() const {
        return m_monitor != nullptr && m_monitor->IsShutdownRequested();
    }

private:
    IShutdownMonitor* m_monitor = ServiceLocator::Get<IShutdownMonitor>(true);
    IShutdownNotifier* m_notifier = ServiceLocator::Get<IShutdownNotifier>(true);
    std::uint64_t m_registration = 0;
};

/// Waits, on the caller's thread, for the worker, the deadline and the host's shutdown. The worker shares
/// m_props and m_synch and never refers to this object: a command that ignores the abort, or that cannot
/// be killed, may still run when the caller has to leave. The worker is detached then and frees both when
/// it ends.
class CommandWatch {
public:
    CommandWatch(SharedProperties props, ICLogger& logger)
        : m_props(std::move(props)), m_logger(logger), m_synch(std::make_shared<tRunCmdSynch>()) {}

    int Run(const ThreadStarter& start);

private:
    enum class End { Completed, TimedOut, Aborted };

    int RunWorker(const ThreadStarter& start);
    End Watch();
    void AwaitChange(bool mustLook);
    std::optional<End> Settle(bool shutdown);
    bool HasEnded();
    bool Leave(std::thread& worker, End end);
    void Abandon(std::thread& worker) noexcept;
    bool AwaitWorker();
    bool Kill();
    void LogCompleted();

    SharedProperties m_props;
    ICLogger& m_logger;
    std::shared_ptr<tRunCmdSynch> m_synch;
    std::optional<Clock::time_point> m_deadline;
};

int CommandWatch::Run(const ThreadStarter& start) {
    const std::string shown = LogText::OneLine(m_props->command);
    const char* const command = shown.c_str();
    m_synch->abort = platform::CreateAutoResetEvent();
    if (!m_synch->abort) {
        m_logger.Error("Cannot create shutdown event for command '%s' because: %s", command,
                       StringUtils::GetLastErrorAsString().c_str());
        return ProcessUtils::kNotRun;
    }
    m_props->abortEvent = &m_synch->abort;
    m_props->run = m_synch;
    // The worker may be detached and still use the event: the last owner of m_synch closes it.
    const DestructorFunctor close([this] { m_props->abortEvent = nullptr; });
    try {
        return RunWorker(start);
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::resource_unavailable_try_again) {
            m_logger.Error("Cannot run command '%s' because no thread resources available", command);
        } else {
            m_logger.Error("Cannot run command '%s' because system error: %s", command, error.what());
        }
    } catch (const std::exception& error) {
        m_logger.Error("Cannot run command '%s' because: %s", command, error.what());
    } catch (...) {
        m_logger.Error("Cannot run command '%s' because: %s", command, "unknown exception");
    }
    return ProcessUtils::kNotRun;
}

int CommandWatch::RunWorker(const ThreadStarter& start) {
    std::thread worker = start([props = m_props, synch = m_synch] {
        platform::NameThread("command");
        RunCommandWorker(props, synch);
    });
    const DestructorFunctor release([this, &worker] {
        if (worker.joinable()) Abandon(worker);
    });
    if (m_props->timeoutSecs > 0) m_deadline = Clock::now() + std::chrono::seconds(m_props->timeoutSecs);
    const End end = Watch();
    const bool isFinal = Leave(worker, end);
    if (end == End::Aborted) {
        m_logger.Info("Aborting command due to shutdown: '%s'", LogText::OneLine(m_props->command).c_str());
        return ProcessUtils::kAborted;
    }
    if (!isFinal) return ProcessUtils::kTimedOut;
    const std::lock_guard lock(m_synch->mutex);
    if (end == End::TimedOut) {  // what was not killed may have ended just in time
        m_props->timedOut =
            m_props->resultCode == ProcessUtils::kTimedOut || std::atomic_ref(m_props->killed).load();
    }
    return m_props->resultCode;
}

CommandWatch::End CommandWatch::Watch() {
    const ShutdownWatch watch(m_synch);
    for (;;) {
        AwaitChange(watch.MustLook());
        const std::optional<End> end = Settle(watch.IsRequested());
        if (end == End::Completed) LogCompleted();
        if (end) return *end;
    }
}

/// Returns at the end of the worker, at the shutdown or the deadline, and at the next look if there must be
/// one.
void CommandWatch::AwaitChange(bool mustLook) {
    std::optional<Clock::time_point> limit = m_deadline;
    if (mustLook) limit = std::min(limit.value_or(Clock::time_point::max()), Clock::now() + kLookInterval);
    std::unique_lock lock(m_synch->mutex);
    const auto hasChanged = [this] { return m_synch->completed || m_synch->shutdown; };
    if (limit) {
        m_synch->changed.wait_until(lock, *limit, hasChanged);
    } else {
        m_synch->changed.wait(lock, hasChanged);
    }
}

std::optional<CommandWatch::End> CommandWatch::Settle(bool shutdown) {
    const bool isLate = m_deadline && Clock::now() >= *m_deadline;
    const bool hasEnded = isLate && HasEnded();
    const std::lock_guard lock(m_synch->mutex);
    if (shutdown || m_synch->shutdown) {
        m_props->abortedOnShutdown = true;
        return End::Aborted;
    }
    if (m_synch->completed) return End::Completed;
    // A command that ended in time is not late because of what its output takes to become rows.
    if (hasEnded) m_deadline.reset();
    if (!isLate || hasEnded) return std::nullopt;
    m_props->timedOut = true;
    m_props->resultCode = ProcessUtils::kTimedOut;
    return End::TimedOut;
}

/// Returns whether the process was started and has ended.
bool CommandWatch::HasEnded() {
    const tRunCmdSynch::Process process = m_synch->RunningProcess();
    return process ? process->HasEnded() : std::atomic_ref(m_props->processId).load() != 0;
}

void CommandWatch::LogCompleted() {
    if (m_props->timeoutSecs != 0) {
        m_logger.Debug("Command '%s' has completed within %i seconds",
                       LogText::OneLine(m_props->command).c_str(), m_props->timeoutSecs);
    } else {
        m_logger.Debug("Command '%s' has completed", LogText::OneLine(m_props->command).c_str());
    }
}

/// Returns whether the worker has ended; otherwise it is detached and goes on by itself.
bool CommandWatch::Leave(std::thread& worker, End end) {
    if (end == End::TimedOut) {
        m_logger.Info("Command '%s' timed out after %i seconds", LogText::OneLine(m_props->command).c_str(),
                      m_props->timeoutSecs);
    }
    if (end == End::Completed || Kill()) {
        worker.join();
        return true;
    }
    if (end == End::Aborted) platform::SignalEvent(m_synch->abort);
    worker.detach();
    return false;
}

/// Waits for a worker that ends the process itself as soon as it has started; not for ever, as a start may
/// hang.
bool CommandWatch::AwaitWorker() {
    constexpr std::chrono::seconds kLongestStart{2};
    std::unique_lock lock(m_synch->mutex);
    return m_synch->changed.wait_for(lock, kLongestStart, [this] { return m_synch->completed; });
}

/// The watch has failed: the host's monitor has thrown, or there was no memory. The worker uses the run's
/// logger, so it is ended, too.
void CommandWatch::Abandon(std::thread& worker) noexcept {
    try {
        Kill();
    } catch (...) {  // the process ends with the worker's thread where it may
    }
    platform::SignalEvent(m_synch->abort);
    if (AwaitWorker()) {
        worker.join();
    } else {
        worker.detach();
    }
}

/// Returns whether the process is certain to end, or has ended. The worker uses the run's logger, which the
/// host may destroy once the caller has returned: so it is not left behind while it starts the process.
bool CommandWatch::Kill() {
    bool isStarting = false;
    {
        const std::lock_guard lock(m_synch->mutex);
        m_synch->given = true;
        isStarting = !m_synch->process && std::atomic_ref(m_props->processId).load() == 0;
    }
    if (!m_props->killOnTimeout) return false;
    if (isStarting) return AwaitWorker();
    return HasEnded() || ProcessUtils::KillCommandProcess(m_props) || HasEnded();
}

}  // namespace

ICLogger& LoggerOf(const ProcessUtils::CmdProperties& props) { return OrSilent(props.logger); }

int RunCommand(const SharedProperties& props, const ThreadStarter& start) {
    try {
        ICLogger* registered = detail::RegisteredLogger();
        return CommandWatch(props, registered != nullptr ? *registered : LoggerOf(*props)).Run(start);
    } catch (...) {
        return ProcessUtils::kNotRun;  // a logger of the host may throw, and there was nothing else to tell
                                       // by
    }
}

}  // namespace quillon
