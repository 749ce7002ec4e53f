#include "platform/ProcessApi.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

#include "platform/ErrorText.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using platform::ChildProcess;
using std::chrono::milliseconds;
using testing::ElementsAre;

platform::ProcessRequest RequestOf(const std::string& command) {
    platform::ProcessRequest request;
    request.command = command;
    return request;
}

TEST(ProcessApi, WaitsForTheProcessTheEventOrTheLimit) {
    const TempDir dir;
    const platform::EventHandle event = platform::CreateAutoResetEvent();
    auto child = ChildProcess::Start(
        RequestOf(ChildCommand("await", {dir.Native("started").string(), dir.Native("go").string()})));
    ASSERT_TRUE(child);
    EXPECT_EQ(child->Wait(event, nullptr, milliseconds(1)), platform::kWaitTimeout);
    ASSERT_TRUE(platform::SignalEvent(event));
    EXPECT_EQ(child->Wait(event, nullptr, std::nullopt), platform::kWaitEvent);
    EXPECT_EQ(child->Wait(event, nullptr, milliseconds(0)), platform::kWaitTimeout);  // reset by the wait
    dir.Write("go", "");
    EXPECT_EQ(child->Wait(event, nullptr, std::nullopt), platform::kWaitProcess);
    ASSERT_TRUE(platform::SignalEvent(event));
    EXPECT_EQ(child->Wait(event, nullptr, std::nullopt), platform::kWaitProcess);
    if (!kWindows) {  // refused on Windows too, but not by the emulator
        EXPECT_EQ(child->Kill({.exitStatus = -5}).result, platform::KillResult::NotKilled);
        EXPECT_EQ(platform::LastError(), 5u);
    }
    EXPECT_EQ(child->End().value_or(platform::ProcessEnd()).status, 7);
}

TEST(ProcessApi, KillsNoGroupsAndNobodyUnknown) {
    for (const std::uint32_t id : {0u, 0xFFFFFFFFu, 0x80000000u}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(platform::KillProcess(id, -5), platform::KillResult::NotOpened);
        EXPECT_EQ(platform::LastError(), 87u);
    }
}

TEST(ProcessApi, AChildInheritsItsThreeHandlesAndNoSignalSettings) {
    if (kWindows) GTEST_SKIP() << "descriptors and signals are counted through /proc";
    RecordingLogger log;
    const std::ifstream inheritable("/dev/null");
    const auto props = CommandOf("ls /proc/self/fd", log);
    const auto old = std::signal(SIGINT, SIG_IGN);
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_EQ(props->outputTable.begin()->ToString("|", ""), "0|0\n1\n2\n3");  // 3 is the list's own
    EXPECT_EQ(ProcessUtils::RunCliCommand(CommandOf("cmd /c kill -2 $$", log)), 128 + 2);
    std::signal(SIGINT, old);
}

TEST(ProcessApi, LeavesNoZombies) {
    if (kWindows) GTEST_SKIP() << "processes leave none on Windows";
    std::uint32_t id = 0;
    {
        const auto child = ChildProcess::Start(RequestOf(ChildCommand("copy")));
        ASSERT_TRUE(child);
        id = child->Id();
    }
    const auto entry = std::filesystem::path("/proc") / std::to_string(id);
    while (std::filesystem::exists(entry)) {
        auto next = ChildProcess::Start(RequestOf("true"));  // letting one go reaps the others
        ASSERT_TRUE(next);
    }
}

}  // namespace

}  // namespace quillon::test
