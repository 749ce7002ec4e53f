#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quillon::testkit {

/// Says how a command goes that is not run.
struct CommandScript {
    std::string output{};                ///< bytes that it writes when it starts, in any encoding
    int code = 0;                        ///< exit code, unless it is killed
    std::chrono::milliseconds delay{0};  ///< from its start to its end
    bool isEndless = false;              ///< ends only when it is killed
    std::uint32_t startError = 0;        ///< Windows code with which its start fails; 0: it starts
};

/// Answers the commands of ProcessUtils::RunCliCommand() for its life, so that no program is run: what
/// the runner makes of output, exit code, time-out, kill and shutdown is as for real commands, but no
/// process is there. A command without a script cannot be started (2, "The system cannot find the file
/// specified."). There is one at a time. Thread-safe, but for its beginning and end.
///
/// @code
/// testkit::ScriptedCommands commands;
/// commands.Set("ipconfig /all", {"Windows IP Configuration\r\n", 0});
/// commands.Set("slow", {"begun", 0, std::chrono::seconds(0), true});  // until its time-out
/// @endcode
class ScriptedCommands {
public:
    ScriptedCommands();
    ~ScriptedCommands();
    ScriptedCommands(const ScriptedCommands&) = delete;
    ScriptedCommands& operator=(const ScriptedCommands&) = delete;

    /// Sets how a command line goes, which must be the same text.
    void Set(const std::string& command, CommandScript script);
    /// Sets how every command line goes that has no script of its own.
    void SetOthers(CommandScript script);
    /// Lets the system run what has no script of its own.
    void RunOthers();
    /// Returns the command lines so far, in the order of their starts, those that failed included.
    std::vector<std::string> Commands() const;

private:
    struct State;
    const std::shared_ptr<State> m_state;
};

}  // namespace quillon::testkit
