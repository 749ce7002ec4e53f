#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/ProcessApi.h"

namespace quillon::platform {

/// Says how a command goes that is not run.
struct CommandScript {
    std::string output{};                ///< bytes that it writes when it starts
    std::int32_t exitStatus = 0;         ///< unless it is killed
    std::chrono::milliseconds delay{0};  ///< from its start to its end
    bool isEndless = false;              ///< it ends only when it is killed
    std::uint32_t startError = 0;        ///< the Windows code with which its start fails; 0: it starts
};

/// Finds the script of a command line; nothing for a command that is run. Called on any thread.
using CommandScripts = std::function<std::optional<CommandScript>(const std::string& command)>;

/// Puts scripts in place of commands that StartProcess() starts from now on; an empty function ends that.
/// For tests. Thread-safe.
void ReplaceCommands(CommandScripts scripts);

}  // namespace quillon::platform
