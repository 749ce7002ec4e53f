#include "quillon/testkit/ScriptedCommands.h"

#include <gmock/gmock.h>

#include <thread>

#include "quillon/ProcessUtils.h"
#include "quillon/testkit/Matchers.h"
#include "quillon/testkit/ShutdownMonitor.h"
#include "support/RecordingLogger.h"

namespace quillon::testkit {

namespace {

using testing::HasSubstr;

class ScriptedCommandsTest : public testing::Test {
protected:
    std::shared_ptr<ProcessUtils::CmdProperties> Properties(const std::string& command) {
        auto props = std::make_shared<ProcessUtils::CmdProperties>();
        props->command = command;
        props->logger = &log;
        props->captureOutput = true;
        return props;
    }
    static std::string OutputOf(const ProcessUtils::CmdProperties& props) {
        return props.outputTable.Empty() ? "" : props.outputTable.begin()->Get("Output").AsString();
    }

    RecordingLogger log;
    ScriptedCommands commands;
};

CommandScript Endless(const std::string& output) { return {output, 0, std::chrono::milliseconds(0), true}; }

}  // namespace

TEST_F(ScriptedCommandsTest, OutputAndCodeAreThoseOfTheScript) {
    const std::string large(300'000, 'x');  // more than a pipe holds
    const std::tuple<const char*, CommandScript, std::string> cases[] = {
        {"both", {"text\r\n", 3}, "text"},
        {"a late end", {"text", -1, std::chrono::milliseconds(30)}, "text"},
        {"UTF-16", {std::string("\xFF\xFEt\0\xE9\0", 6)}, "t\xC3\xA9"},
        {"a large output", {large}, large},
        {"no output", {}, ""},
    };
    for (const auto& [what, script, output] : cases) {
        SCOPED_TRACE(what);
        commands.Set("tool /x", script);
        const auto props = Properties("tool /x");
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), script.code);
        EXPECT_EQ(OutputOf(*props), output);
        EXPECT_FALSE(props->timedOut || props->killed);
        EXPECT_NE(props->processId, 0U);
    }
    const auto without = Properties("tool /x");
    without->captureOutput = false;
    commands.Set("tool /x", {large, 4});
    EXPECT_EQ(ProcessUtils::RunCliCommand(without), 4);
}

TEST_F(ScriptedCommandsTest, StartsFailAsTheSystemSays) {
    commands.Set("secret", {"", 0, {}, false, 5});
    EXPECT_EQ(ProcessUtils::RunCliCommand(Properties("secret")), ProcessUtils::kNotStarted);
    EXPECT_EQ(ProcessUtils::RunCliCommand(Properties("unknown")), ProcessUtils::kNotStarted);
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                testing::ElementsAre(
                    testing::AllOf(HasSubstr("Could not run command 'secret' because:"), HasSubstr("Access")),
                    HasSubstr("Could not run command 'unknown' because:")));
    commands.SetOthers({"", 6});
    EXPECT_EQ(ProcessUtils::RunCliCommand(Properties("unknown")), 6);
    commands.RunOthers();
    EXPECT_EQ(ProcessUtils::RunCliCommand(Properties("cmd /c exit 7")), 7);
    EXPECT_THAT(commands.Commands(), testing::ElementsAre("secret", "unknown", "unknown", "cmd /c exit 7"));
}

TEST_F(ScriptedCommandsTest, TimeOutEndsWhatIsKilledAndLeavesTheRest) {
    commands.Set("slow", Endless("begun"));
    for (const bool kills : {true, false}) {
        const auto props = Properties("slow");
        props->timeoutSecs = 1;
        props->killOnTimeout = kills;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props),
                  kills ? ProcessUtils::kKilled : ProcessUtils::kTimedOut);
        EXPECT_TRUE(props->timedOut);
        EXPECT_EQ(props->killed, kills);
        if (!kills) continue;  // a worker may still write to it
        EXPECT_EQ(OutputOf(*props), "begun");
        InvocationResult result;
        ProcessUtils::SetSpecialErrorData(props.get(), result, "failed");
        EXPECT_THAT(result, FailsWith(3, "Sub-process killed (usually on time-out)"));
        EXPECT_FALSE(ProcessUtils::KillCommandProcess(props)) << "it has ended";
    }
}

TEST_F(ScriptedCommandsTest, ShutdownAndTooMuchOutputEndACommand) {
    commands.Set("slow", Endless(std::string(100'000, 'x')));
    const auto limited = Properties("slow");
    limited->maxOutputBytes = 1000;
    EXPECT_EQ(ProcessUtils::RunCliCommand(limited), ProcessUtils::kKilled);
    EXPECT_TRUE(limited->outputTruncated);
    EXPECT_EQ(OutputOf(*limited).size(), 1000U);

    ShutdownMonitor shutdown;
    const auto aborted = Properties("slow");
    aborted->killOnTimeout = true;
    std::thread host([&shutdown, this] {
        for (int i = 0; i < 5000 && commands.Commands().size() < 2; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        shutdown.RequestShutdown();
    });
    EXPECT_EQ(ProcessUtils::RunCliCommand(aborted), ProcessUtils::kAborted);
    host.join();
    EXPECT_TRUE(aborted->abortedOnShutdown && aborted->killed);
}

}  // namespace quillon::testkit
