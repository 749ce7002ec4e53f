#include "providers/CommandRun.h"

#include <gmock/gmock.h>

#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"

namespace quillon::test {

TEST(CommandRun, RunsOutOfHandlesInAnOrderlyWay) {
    if (kWindows) GTEST_SKIP() << "the number of handles has no limit on Windows";
    if (kSanitized) GTEST_SKIP() << "the sanitizer itself fails without descriptors";
    RecordingLogger log;
    const auto props = CommandOf("cmd /c ulimit -n 40; " + ChildCommand("starved"), log);
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    // No event, no output file or process, and then enough.
    EXPECT_THAT(props->outputTable.GetFirstRow()->Get("Output").GetStringValue(),
                testing::MatchesRegex("-3 (1 )+(0 )*0"));
}

TEST(CommandRun, WhatIsGivenUpBeforeItsStartIsNotStarted) {
    RecordingLogger log;
    const Monitor monitor([] { return true; });
    for (const bool kill : {false, true}) {
        SCOPED_TRACE(kill);
        const auto props = CommandOf(ChildCommand("copy"), log);
        props->killOnTimeout = kill;
        std::function<void()> work;
        const auto hold = [&work](std::function<void()> body) {
            work = std::move(body);
            return std::thread([] {});
        };
        EXPECT_EQ(RunCommand(props, hold), -6);
        work();  // the worker gets its turn only now
        EXPECT_EQ(props->processId, 0u);
        EXPECT_EQ(props->resultCode, -6);
    }
}

TEST(CommandRun, WhatIsLateBeforeItsStartHasTimedOut) {
    RecordingLogger log;
    const auto props = CommandOf(ChildCommand("copy"), log);
    props->timeoutSecs = 1;
    props->killOnTimeout = true;
    const auto hold = [&props](std::function<void()> body) {
        const auto synch = std::static_pointer_cast<tRunCmdSynch>(props->run);
        return std::thread([synch, body] {
            for (bool given = false; !given; std::this_thread::yield()) {
                const std::lock_guard lock(synch->mutex);
                given = synch->given;
            }
            body();  // the worker gets its turn only when its caller waits for its end
        });
    };
    EXPECT_EQ(RunCommand(props, hold), -2);
    EXPECT_EQ(props->processId, 0u);
    EXPECT_TRUE(props->timedOut);
}

TEST(CommandRun, ReportsThatNoThreadIsToBeHad) {
    const std::error_code invalid = std::make_error_code(std::errc::invalid_argument);
    const std::pair<std::error_code, std::string> cases[] = {
        {std::make_error_code(std::errc::resource_unavailable_try_again), "no thread resources available"},
        {invalid, "system error: " + invalid.message()}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.second);
        RecordingLogger log;
        const auto props = CommandOf("x", log);
        const auto refuse = [&c](const auto&) -> std::thread { throw std::system_error(c.first); };
        EXPECT_EQ(RunCommand(props, refuse), -3);
        EXPECT_THAT(log.Lines(), testing::ElementsAre("Cannot run command 'x' because " + c.second));
        EXPECT_EQ(props->abortEvent, nullptr);
        EXPECT_EQ(props->resultCode, -4);
    }
}

}  // namespace quillon::test
