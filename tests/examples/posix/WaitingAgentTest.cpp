#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "examples/RunAgent.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

/// How often the threads of a process have begun to wait; -1 when there is no such process.
long long CountWaits(std::uint32_t process) {
    constexpr const char* kLabel = "voluntary_ctxt_switches:";
    long long sum = 0;
    std::error_code error;
    for (const auto& thread : fs::directory_iterator("/proc/" + std::to_string(process) + "/task", error)) {
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with(kLabel))
                sum += std::stoll(line.substr(std::string(kLabel).size())) + (sum < 0);
    }
    return error ? -1 : sum;
}

/// Waits until the threads of a process have come to rest. False when they do not within ten seconds.
bool AwaitRest(std::uint32_t process) {
    constexpr int kLooks = 50;
    long long before = -1;
    for (int look = 0; look < kLooks; ++look) {
        const long long now = CountWaits(process);
        if (now >= 0 && now == before) return true;
        before = now;
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    return false;
}

}  // namespace

TEST(WaitingAgent, DoesNotWakeUp) {
    if (kSanitized) GTEST_SKIP() << "a thread of the sanitizer wakes up";
    const TempDir dir;
    const fs::path started = dir.Native("started"), go = dir.Native("go");
    RecordingLogger log;
    const std::string command = "command=" + ChildCommand("await", {started.string(), go.string()});
    const auto props = CommandOf(AgentCommand({"run", "Commands.Run", command, "timeout=120"}).Get(), log);
    props->timeoutSecs = 120;
    props->killOnTimeout = props->killTree = true;
    std::thread agent([&props] { ProcessUtils::RunCliCommand(props); });
    EXPECT_TRUE(AwaitFile(started));
    const std::uint32_t process = std::atomic_ref(props->processId).load();
    EXPECT_TRUE(AwaitRest(process));
    const long long before = CountWaits(process);
    std::this_thread::sleep_for(std::chrono::seconds(5));
    EXPECT_EQ(CountWaits(process), before);
    EXPECT_GE(before, 0);
    std::ofstream(go) << "go";
    agent.join();
}

}  // namespace quillon::test
