#include "providers/CommandRun.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <system_error>

#include "providers/SilentLogger.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/IShutdownMonitor.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using Clock = std::chrono::steady_clock;

/// The caller looks at the shutdown monitor at least this often.
constexpr std::chrono::milliseconds kLookInterval{100};

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
    std::optional<End> Settle(bool shutdown);
    bool Leave(std::thread& worker, End end);
    void LogCompleted();

    SharedProperties m_props;
    ICLogger& m_logger;
    IShutdownMonitor* m_monitor = ServiceLocator::Get<IShutdownMonitor>(true);
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
    std::thread worker = start([props = m_props, synch = m_synch] { RunCommandWorker(props, synch); });
    // The host's monitor may throw in Watch(), and a thread that is neither joined nor detached ends the
    // process.
    const DestructorFunctor release([&worker] {
        if (worker.joinable()) worker.detach();
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
    return m_props->resultCode;
}

CommandWatch::End CommandWatch::Watch() {
    for (;;) {
        {
            const auto next = Clock::now() + kLookInterval;
            std::unique_lock lock(m_synch->mutex);
            m_synch->changed.wait_until(lock, m_deadline ? std::min(*m_deadline, next) : next,
                                        [this] { return m_synch->completed; });
        }
        const bool shutdown = m_monitor != nullptr && m_monitor->IsShutdownRequested();
        const std::optional<End> end = Settle(shutdown);
        if (end == End::Aborted) platform::SignalEvent(m_synch->abort);
        if (end == End::Completed) LogCompleted();
        if (end) return *end;
    }
}

std::optional<CommandWatch::End> CommandWatch::Settle(bool shutdown) {
    const std::lock_guard lock(m_synch->mutex);
    if (shutdown) {
        m_props->abortedOnShutdown = true;
        return End::Aborted;
    }
    if (m_synch->completed) return End::Completed;
    if (!m_deadline || Clock::now() < *m_deadline) return std::nullopt;
    m_props->timedOut = true;
    m_props->resultCode = ProcessUtils::kTimedOut;
    return End::TimedOut;
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
    if (end == End::Completed || (m_props->killOnTimeout && ProcessUtils::KillCommandProcess(m_props))) {
        worker.join();
        return true;
    }
    worker.detach();
    return false;
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
