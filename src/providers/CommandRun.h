#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/ProcessApi.h"
#include "quillon/ProcessUtils.h"

namespace quillon {

/// Holds what the caller's thread and the worker of a run share. The properties refer to it, so that the
/// process can be killed as long as they live. The last of the three destroys it, and closes the event with
/// it.
struct tRunCmdSynch {
    using Process = std::shared_ptr<const platform::RunningProcess>;

    std::mutex mutex;
    std::condition_variable changed;
    // Guarded by the mutex, as are the outcome members of the run's properties.
    bool completed = false;
    bool shutdown = false;  ///< the host has said so
    bool given = false;     ///< the caller has given the run up, perhaps before the process was started
    Process process;        ///< set by the worker, and taken away when the process has ended
    platform::EventHandle abort;

    /// Null before the start and after the end.
    Process RunningProcess() {
        const std::lock_guard lock(mutex);
        return process;
    }
};

using SharedProperties = std::shared_ptr<ProcessUtils::CmdProperties>;
/// Starts a thread; throws std::system_error when there is none to be had.
using ThreadStarter = std::function<std::thread(std::function<void()>)>;

/// Returns the logger of the run; without one, a logger that writes none of the runner's messages.
ICLogger& LoggerOf(const ProcessUtils::CmdProperties& props);

/// Does what ProcessUtils::RunCliCommand does with a given way to start the worker.
int RunCommand(const SharedProperties& props, const ThreadStarter& start);
/// Returns the scope of the kill that the properties ask for.
platform::KillScope ScopeOf(const ProcessUtils::CmdProperties& props);
/// Does what ProcessUtils::KillCommandProcess does with a scope.
bool KillCommand(ProcessUtils::CmdProperties& props, platform::KillScope scope);

/// Is the worker of a run: runs the command to its end or the abort event, fills in
/// the outcome and sets the completion flag, whatever happens.
void RunCommandWorker(const SharedProperties& props, const std::shared_ptr<tRunCmdSynch>& synch) noexcept;

}  // namespace quillon
