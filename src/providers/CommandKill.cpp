#include <algorithm>
#include <atomic>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "providers/CommandRun.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

/// A run's process is reached by reference, so that nobody else with its identifier is.
platform::KillOutcome EndProcess(const ProcessUtils::CmdProperties& props, std::uint32_t id,
                                 platform::KillScope scope) {
    if (!props.run) return {platform::KillProcess(id, ProcessUtils::kKilled), {}};
    const auto process = std::static_pointer_cast<tRunCmdSynch>(props.run)->RunningProcess();
    if (process) {
        return process->Kill({ProcessUtils::kKilled, scope, std::chrono::milliseconds(props.killGraceMs)});
    }
    platform::SetLastErrorCode(base::kInvalidParameter);  // as for a process that does not exist
    return {platform::KillResult::NotOpened, {}};
}

void LogSurvivors(ICLogger& logger, const std::vector<std::uint32_t>& survivors, unsigned long id) {
    if (survivors.empty()) return;
    std::string list;
    for (const std::uint32_t survivor : survivors)
        list += (list.empty() ? "" : ", ") + std::to_string(survivor);
    logger.Warn("Killing command process with PID %lu left these processes running: %s", id, list.c_str());
}

}  // namespace

platform::KillScope ScopeOf(const ProcessUtils::CmdProperties& props) {
    return props.killTree ? platform::KillScope::Tree : platform::KillScope::Process;
}

bool KillCommand(ProcessUtils::CmdProperties& props, platform::KillScope scope) {
    ICLogger& logger = LoggerOf(props);
    const unsigned long id = std::atomic_ref(props.processId).load();
    if (id == 0) {
        logger.Error("Internal error: no PID for command process to be killed");
        return false;
    }
    logger.Debug("About to attempt to kill command process with PID %lu", id);
    platform::KillOutcome outcome = EndProcess(props, static_cast<std::uint32_t>(id), scope);
    if (outcome.result == platform::KillResult::NotOpened) {
        logger.Error("Could not open command process with PID %lu for killing because: %s", id,
                     StringUtils::GetLastErrorAsString().c_str());
        return false;
    }
    if (outcome.result == platform::KillResult::NotKilled) {
        logger.Error("Could not kill command process with PID %lu because: %s", id,
                     StringUtils::GetLastErrorAsString().c_str());
        return false;
    }
    std::atomic_ref(props.killed).store(true);
    logger.Info("Killed command process with PID %lu", id);
    LogSurvivors(logger, outcome.survivors, id);
    props.survivors = std::move(outcome.survivors);
    return true;
}

}  // namespace quillon
