// The agent as a service of Windows; posix/NotifyTest.cpp tests what it tells systemd.
#include <gmock/gmock.h>

#include <windows.h>

#include "examples/Emulator.h"
#include "examples/RunAgent.h"
#include "support/ChildMain.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using testing::HasSubstr;

/// Waits until the pipe is there, for 20 seconds at most.
HANDLE Connect(const std::string& pipe) {
    constexpr int kTries = 200;
    for (int i = 0; i < kTries; ++i) {
        const HANDLE client =
            ::CreateFileA(pipe.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (client != INVALID_HANDLE_VALUE) return client;
        ::Sleep(100);
    }
    return INVALID_HANDLE_VALUE;
}

std::string JsonText(const std::string& text) {
    std::string escaped;
    for (const char c : text) escaped += c == '\\' || c == '"' ? std::string("\\") + c : std::string(1, c);
    return escaped;
}

}  // namespace

TEST(AgentService, IsInstalledStartedStoppedAndRemoved) {
    // Only the emulator's services are nobody's own.
    if (!IsEmulated()) GTEST_SKIP() << "would change the services of this machine";
    const TempDir dir;
    const std::string pipe = R"(\\.\pipe\quillon-service-)" + std::to_string(::GetCurrentProcessId());
    RunAgent({"service", "remove"});  // what a test that was ended left
    ASSERT_EQ(RunAgent({"service", "install", "--listen", pipe, "--data", dir.Native().string()}).exitCode,
              0);
    ASSERT_EQ(RunLine("net start QuillonAgent").exitCode, 0);
    const HANDLE client = Connect(pipe);
    ASSERT_NE(client, INVALID_HANDLE_VALUE);
    const auto started = dir.Native("started");
    const std::string command = ChildCommand("await", {started.string(), dir.Native("never").string()});
    const std::string call =
        R"({"id":1,"method":"Commands.Run","parameters":{"command":")" + JsonText(command) + "\"}}\n";
    DWORD count = 0;
    EXPECT_TRUE(::WriteFile(client, call.data(), static_cast<DWORD>(call.size()), &count, nullptr));
    EXPECT_TRUE(AwaitFile(started));
    EXPECT_EQ(RunLine("net stop QuillonAgent").exitCode, 0);
    std::string answer(1000, '\0');
    EXPECT_TRUE(::ReadFile(client, answer.data(), static_cast<DWORD>(answer.size()), &count, nullptr));
    EXPECT_THAT(answer, HasSubstr("Aborted due to Agent shutdown"));
    ::CloseHandle(client);
    EXPECT_EQ(RunAgent({"service", "remove"}).exitCode, 0);
    const AgentRun again = RunAgent({"service", "remove"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_THAT(again.errors, HasSubstr("There is no service to remove: "));
}

}  // namespace quillon::test
