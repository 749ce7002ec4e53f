#include <gmock/gmock.h>
#include <pthread.h>
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

#include "platform/posix/CommandGroup.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/ProcessUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"
#include "support/Threads.h"

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

/// Leaves its group, its parents and its environment, and makes STARTED.
[[noreturn]] void Hide(const std::string& started) {
    LimitLife();
    ::setsid();
    MoveOn();
    const std::string program = fs::read_symlink("/proc/self/exe").string();
    const std::vector<std::string> texts{program, "--child", "hostile", "linger", started};
    std::vector<char*> arguments;
    for (const std::string& text : texts) arguments.push_back(const_cast<char*>(text.c_str()));
    arguments.push_back(nullptr);
    char* environment[] = {nullptr};
    ::execve(program.c_str(), arguments.data(), environment);
    ::_exit(4);
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
    } else if (kind == "hide") {
        if (::fork() == 0) Hide(a[1]);
        WaitForTheEnd();
    } else if (kind == "daemon") {
        if (::fork() == 0) {  // whose child outlives it with the output open
            LimitLife();
            ::setsid();
            MoveOn();
            WaitForTheEnd();
        }
    } else if (kind == "headless") {
        if (::fork() == 0) {  // its first thread ends, another goes on
            LimitLife();
            ::setsid();
            MoveOn();
            std::thread(&WaitForTheEnd).detach();
            ::pthread_exit(nullptr);
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

/// Returns whether a thread of the process shows `text` in its command line; one that has ended shows none.
bool Shows(const fs::path& process, const std::string& text) {
    std::error_code error;
    for (const auto& thread : fs::directory_iterator(process / "task", error)) {
        std::ifstream file(thread.path() / "cmdline");
        std::string line;
        std::getline(file, line);
        if (line.find(text) != std::string::npos) return true;
    }
    return false;
}

/// Counts, and ends, the living processes that have `text` in their command line, as forks have from their
/// parents.
int CountProcesses(const std::string& text) {
    int count = 0;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        if (!Shows(entry.path(), text)) continue;
        ++count;
        ::kill(std::stoi(entry.path().filename().string()), SIGKILL);  // nothing stays behind a failure
    }
    return count;
}

long CountEntries(const char* folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

/// A process may show itself before the thread that started it has told its identifier.
bool AwaitIdentifier(ProcessUtils::CmdProperties& props) {
    for (unsigned i = 0; i < kLifetime * 1000; ++i) {
        if (std::atomic_ref(props.processId).load() != 0) return true;
        ::usleep(1000);
    }
    return false;
}

/// Runs a hostile command and kills it as soon as it has shown itself.
bool RunAndKill(const std::string& kind, const std::string& started, ICLogger& log) {
    const auto props = CommandOf(ChildCommand("hostile", {kind, started}), log);
    props->killTree = true;
    props->timeoutSecs = static_cast<int>(kLifetime);
    props->killOnTimeout = true;
    std::thread killer([&props, &started] {
        EXPECT_TRUE(AwaitFile(started) && AwaitIdentifier(*props) && ProcessUtils::KillCommandProcess(props));
    });
    const int code = ProcessUtils::RunCliCommand(props);
    killer.join();
    EXPECT_THAT(props->survivors, testing::IsEmpty()) << "of " << props->processId;
    return code == -5 && props->killed && props->survivors.empty();
}

using Kinds = std::vector<const char*>;
const Kinds kKinds{"ignore", "stop", "fork", "join", "daemon", "headless", "chain"};

void KillMany(const Kinds& kinds, int children) {
    constexpr int kAtOnce = 8;
    const TempDir dir;
    RecordingLogger log;
    const long descriptors = CountEntries("/proc/self/fd");
    const long threads = CountEntries("/proc/self/task");
    std::atomic<int> next{0};
    Threads(kAtOnce, [&](int) {
        for (int i = next++; i < children; i = next++) {
            const char* const kind = kinds[static_cast<std::size_t>(i) % kinds.size()];
            const std::string started = dir.Native("started " + std::to_string(i) + ' ' + kind).string();
            EXPECT_TRUE(RunAndKill(kind, started, log)) << i << kind;
            EXPECT_EQ(CountProcesses(started), 0) << i << kind;
        }
    }).Join();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (CountEntries("/proc/self/task") > threads && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_LE(CountEntries("/proc/self/task"), threads);  // of which some may have been about to end
    EXPECT_LE(CountEntries("/proc/self/fd"), descriptors);
}

}  // namespace

TEST(HostileChildren, NothingIsLeftOfThemAfterAKill) {
    platform::CommandGroup::Allow(false);
    const DestructorFunctor allow([] { platform::CommandGroup::Allow(true); });
    KillMany(kKinds, 204 / QUILLON_TEST_SLOWDOWN);
}

TEST(HostileChildren, NothingIsLeftOfThemWhereThereAreControlGroups) {
    const auto group = platform::CommandGroup::Make();
    if (group == nullptr) GTEST_SKIP() << "no control groups of version 2 that this process may divide";
    const fs::path place = fs::read_symlink("/proc/self/fd/" + std::to_string(group->Descriptor()));
    Kinds kinds = kKinds;
    kinds.push_back("hide");
    KillMany(kinds, 70 / QUILLON_TEST_SLOWDOWN);
    const std::string ours = "quillon-command-" + std::to_string(::getpid()) + '-';
    int left = 0;
    for (const auto& entry : fs::directory_iterator(place.parent_path()))
        left += entry.path().filename().string().starts_with(ours) ? 1 : 0;
    EXPECT_EQ(left, 1) << "more than the group of this test itself";
}

}  // namespace quillon::test
