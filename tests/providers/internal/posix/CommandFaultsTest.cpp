#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>

#include "platform/native/KernelRelease.h"
#include "providers/CommandOutput.h"
#include "quillon/ProcessUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

namespace {

using Arguments = std::vector<std::string>;
using Level = ICLogger::Level;

std::string OutputOf(const std::shared_ptr<ProcessUtils::CmdProperties>& props) {
    return props->outputTable.GetFirstRow()->Get("Output").GetStringValue();
}

/// What a child mode tells of a run: its code, whether output is missing, and the beginning of its error.
std::string Summary(const std::string& command) {
    RecordingLogger log;
    const auto props = CommandOf(command, log);
    const int code = ProcessUtils::RunCliCommand(props);
    const auto errors = log.Lines(Level::Error);
    return std::to_string(code) + (props->outputTruncated ? " lost" : " whole") +
           (errors.empty() ? "" : " " + errors.front().substr(0, errors.front().find('\'')));
}

void Limit(int resource, ::rlim_t value) {
    ::rlimit limit{value, value};
    ::setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

/// poor: runs a command that writes more than this process has memory for.
const ChildMode poor("poor", [](const Arguments&) {
    constexpr ::rlim_t kMegabyte = 1'000'000;
    long long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    Limit(RLIMIT_AS, static_cast<::rlim_t>(pages * ::sysconf(_SC_PAGESIZE)) + 80 * kMegabyte);
    std::printf("%s", Summary("head -c 200000000 /dev/zero").c_str());
    return 0;
});

/// bare RESULT: runs a command without standard streams and without descriptors above them.
const ChildMode bare("bare", [](const Arguments& a) {
    const ::rlim_t before = 64;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
    ::rlimit limit{3, before};
    ::setrlimit(RLIMIT_NOFILE, &limit);
    const std::string summary = Summary("echo seen by nobody");
    limit.rlim_cur = before;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    std::ofstream(a[0]) << summary;
    return 0;
});

/// reaping HOW: is a host that ignores SIGCHLD, or waits for every child, and runs a command.
const ChildMode reaping("reaping", [](const Arguments& a) {
    if (a[0] == "ignores") {
        std::signal(SIGCHLD, SIG_IGN);
    } else {
        std::signal(SIGCHLD, [](int) {
            const int error = errno;
            while (::waitpid(-1, nullptr, WNOHANG) > 0) {
            }
            errno = error;
        });
    }
    for (const char* const code : {"0", "5"})
        std::printf("%s|", Summary(ChildCommand("print", {"x", code})).c_str());
    return 0;
});

std::string RunMode(const std::string& mode, const Arguments& arguments = {}) {
    RecordingLogger log;
    const auto props = CommandOf(ChildCommand(mode, arguments), log);
    props->timeoutSecs = 60;
    props->killOnTimeout = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    return OutputOf(props);
}

}  // namespace

TEST(CommandFaults, OutputThatCannotBeKeptIsNotTakenForAnEmptyOne) {
    if (kSanitized) GTEST_SKIP() << "the sanitizers need the address space";
    EXPECT_EQ(RunMode("poor"), "-8 lost Could not keep the output of command");
}

TEST(CommandFaults, MemoryThatIsRefusedWhileReadingIsAFault) {
    if (kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    CommandOutput output(0);
    ASSERT_TRUE(output.Open());
    const std::string text(50'000, 'x');
    ASSERT_EQ(::write(output.Capture().ChildEnd().Get(), text.data(), text.size()), 50'000);
    TheRefusedCalls() = {RefusedCalls::Memory, 0, 1'000};
    output.TakeRest();
    TheRefusedCalls() = {};
    EXPECT_EQ(output.Fault(), 8u);
}

TEST(CommandFaults, OutputIsNotLedToNowhereForWantOfADescriptor) {
    if (kSanitized) GTEST_SKIP() << "the sanitizer itself needs descriptors";
    const TempDir dir;
    RunMode("bare", {dir.Native("result").string()});
    EXPECT_EQ(dir.Read("result"), "1 whole Could not run command ");
}

TEST(CommandFaults, AHostThatReapsChildrenKeepsTheirExitCodes) {
    const auto kernel = platform::KernelRelease();
    const bool isTold = kernel > std::array<std::uint32_t, 4>{6, 15};
    for (const char* const how : {"ignores", "waits"}) {
        SCOPED_TRACE(how);
        const std::string refused = "1 whole Could not get exit code of |";
        if (isTold) {
            EXPECT_EQ(RunMode("reaping", {how}), "0 whole|5 whole|");
        } else if (std::string(how) == "ignores") {
            EXPECT_EQ(RunMode("reaping", {how}), refused + refused);
        }  // otherwise the host's handler and the runner race
    }
}

}  // namespace quillon::test
