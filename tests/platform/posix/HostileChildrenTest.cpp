#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "quillon/ProcessUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

/// Every process of these tests ends by itself after this many seconds, and no process forks twice.
constexpr unsigned kLifetime = 20;
constexpr int kMostLinks = 30;

/// Ends this process in time whatever becomes of it; an alarm is not inherited.
void LimitLife() { ::alarm(kLifetime); }

[[noreturn]] void WaitForTheEnd() {
    for (unsigned i = 0; i < kLifetime * 2; ++i) ::usleep(500'000);
    ::_exit(3);
}

/// Returns in the child only; the parent ends.
void MoveOn() {
    if (::fork() != 0) ::_exit(0);
    LimitLife();
}

void Report(const std::string& started) { std::ofstream(started) << ::getpid() << std::flush; }

[[noreturn]] void RunChain(const std::string& started) {
    for (int link = 0; link < kMostLinks; ++link) {
        if (link == 3) Report(started);
        MoveOn();
        ::setsid();
        ::usleep(500);
    }
    WaitForTheEnd();
}

/// hostile KIND STARTED: makes STARTED, and gives whoever wants to end it a hard time.
const ChildMode hostile("hostile", [](const std::vector<std::string>& a) {
    LimitLife();
    const std::string& kind = a[0];
    if (kind == "ignore") {
        for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE}) std::signal(number, SIG_IGN);
    } else if (kind == "join") {
        ::setpgid(0, ::getpgid(::getppid()));
    } else if (kind == "fork") {
        if (::fork() == 0) {
            LimitLife();
            ::setsid();
            WaitForTheEnd();
        }
    } else if (kind == "daemon") {
        if (::fork() == 0) {  // whose child outlives it with the output open
            LimitLife();
            ::setsid();
            MoveOn();
            WaitForTheEnd();
        }
    } else if (kind == "chain") {
        if (::fork() == 0) {
            LimitLife();
            RunChain(a[1]);
        }
        WaitForTheEnd();
    }
    Report(a[1]);
    if (kind == "stop") ::raise(SIGSTOP);
    WaitForTheEnd();
    return 0;
});

/// Counts, and ends, the living processes that have `text` in their command line, as forks have from their
/// parents.
int CountProcesses(const std::string& text) {
    int count = 0;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        std::ifstream file(entry.path() / "cmdline");
        std::string line;
        std::getline(file, line);
        if (line.find(text) == std::string::npos) continue;
        ++count;
        ::kill(std::stoi(entry.path().filename().string()), SIGKILL);  // nothing stays behind a failure
    }
    return count;
}

long CountEntries(const char* folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

/// Runs a hostile command and kills it as soon as it has shown itself.
bool RunAndKill(const std::string& kind, const std::string& started, ICLogger& log) {
    const auto props = CommandOf(ChildCommand("hostile", {kind, started}), log);
    props->killTree = true;
    props->timeoutSecs = static_cast<int>(kLifetime);
    props->killOnTimeout = true;
    std::thread killer([&props, &started] {
        if (AwaitFile(started)) ProcessUtils::KillCommandProcess(props);
    });
    const int code = ProcessUtils::RunCliCommand(props);
    killer.join();
    EXPECT_THAT(props->survivors, testing::IsEmpty()) << "of " << props->processId;
    return code == -5 && props->killed && props->survivors.empty();
}

}  // namespace

TEST(HostileChildren, NothingIsLeftOfThemAfterAKill) {
    constexpr int kChildren = 204 / QUILLON_TEST_SLOWDOWN;
    constexpr int kAtOnce = 8;
    const char* const kinds[] = {"ignore", "stop", "fork", "join", "daemon", "chain"};
    const TempDir dir;
    RecordingLogger log;
    const long descriptors = CountEntries("/proc/self/fd");
    const long threads = CountEntries("/proc/self/task");
    std::atomic<int> next{0};
    std::vector<std::thread> callers;
    for (int caller = 0; caller < kAtOnce; ++caller) {
        callers.emplace_back([&] {
            for (int i = next++; i < kChildren; i = next++) {
                const char* const kind = kinds[static_cast<std::size_t>(i) % std::size(kinds)];
                const std::string started = dir.Native("started " + std::to_string(i) + ' ' + kind).string();
                EXPECT_TRUE(RunAndKill(kind, started, log)) << i << kind;
                EXPECT_EQ(CountProcesses(started), 0) << i << kind;
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (CountEntries("/proc/self/task") > threads && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_LE(CountEntries("/proc/self/task"), threads);  // of which some may have been about to end
    EXPECT_LE(CountEntries("/proc/self/fd"), descriptors);
}

}  // namespace quillon::test
