#include "quillon/testkit/ScriptedCommands.h"

#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "base/ErrorCodes.h"
#include "testkit/Facilities.h"

namespace quillon::testkit {

namespace {

platform::CommandScript ToPlatform(CommandScript script) {
    return {std::move(script.output), script.code, script.delay, script.isEndless, script.startError};
}

}  // namespace

/// A command may start while the facade ends.
struct ScriptedCommands::State {
    std::mutex mutex;
    std::map<std::string, platform::CommandScript> scripts;
    std::optional<platform::CommandScript> others;
    std::vector<std::string> commands;

    std::optional<platform::CommandScript> Find(const std::string& command) {
        const std::lock_guard lock(mutex);
        commands.push_back(command);
        const auto found = scripts.find(command);
        return found == scripts.end() ? others : found->second;
    }
};

ScriptedCommands::ScriptedCommands() : m_state(std::make_shared<State>()) {
    m_state->others.emplace().startError = base::kFileNotFound;
    ChangeFacilities([state = m_state](FacilityCalls& calls) {
        calls.commands = [state](const std::string& command) { return state->Find(command); };
    });
}

ScriptedCommands::~ScriptedCommands() {
    ChangeFacilities([](FacilityCalls& calls) { calls.commands = nullptr; });
}

void ScriptedCommands::Set(const std::string& command, CommandScript script) {
    const std::lock_guard lock(m_state->mutex);
    m_state->scripts[command] = ToPlatform(std::move(script));
}

void ScriptedCommands::SetOthers(CommandScript script) {
    const std::lock_guard lock(m_state->mutex);
    m_state->others = ToPlatform(std::move(script));
}

void ScriptedCommands::RunOthers() {
    const std::lock_guard lock(m_state->mutex);
    m_state->others.reset();
}

std::vector<std::string> ScriptedCommands::Commands() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->commands;
}

}  // namespace quillon::testkit
