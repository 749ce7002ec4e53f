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

/// Holds what the caller's thread and the worker of a run share. The later of the two to end destroys it,
/// and closes the event with it.
struct tRunCmdSynch {
    std::mutex mutex;
    std::condition_variable changed;
    /// Guarded by the mutex, as are the outcome members of the run's properties.
    bool completed = false;
    platform::EventHandle abort;
    /// The worker sets it. It is kept until nobody can kill the process any more, so that its identifier
    /// is not given to another process meanwhile.
    std::optional<platform::ChildProcess> process;
};

using SharedProperties = std::shared_ptr<ProcessUtils::CmdProperties>;
/// Starts a thread; throws std::system_error when there is none to be had.
using ThreadStarter = std::function<std::thread(std::function<void()>)>;

/// Returns the logger of the run; without one, a logger that writes none of the runner's messages.
ICLogger& LoggerOf(const ProcessUtils::CmdProperties& props);

/// ProcessUtils::RunCliCommand with a given way to start the worker.
int RunCommand(const SharedProperties& props, const ThreadStarter& start);

/// The worker of a run: runs the command to its end or the abort event, fills in
/// the outcome and sets the completion flag, whatever happens.
void RunCommandWorker(const SharedProperties& props, const std::shared_ptr<tRunCmdSynch>& synch) noexcept;

}  // namespace quillon
