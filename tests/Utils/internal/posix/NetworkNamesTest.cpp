#include <gmock/gmock.h>
#include <netdb.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "quillon/NetworkUtils.h"
#include "quillon/WindowsSockets.h"
#include "simulation/sockets/Sockets.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/Threads.h"
#include "support/posix/FailingCalls.h"

namespace quillon {

namespace {

using simulation::Sockets;

/// Asks for names when an entry is written, as the head of a log file does.
class AskingLogger final : public LoggerBase {
    void Write(Level level, const char* format, std::va_list) override {
        if (level == Level::Error && ++m_depth == 1)
            std::printf("%s %s %s\n", format, NetworkUtils::GetHostName(), NetworkUtils::GetFqdn());
    }
    int m_depth = 0;
};

/// network-names FAULTS: of the host's name, the qualified name (q: for good, m: for want of descriptors),
/// the loopback's name, sockets.
const test::ChildMode networkNames("network-names", [](const std::vector<std::string>& arguments) {
    const auto has = [&](char fault) { return arguments[0].find(fault) != std::string::npos; };
    test::FailingCalls& failing = test::TheFailingCalls();
    failing.hostName = has('h');
    failing.addressInfo = has('q') ? EAI_FAIL : has('m') ? EAI_SYSTEM : 0;
    failing.nameInfo = has('l');
    Sockets::Process().FailStarts(has('s'));
    AskingLogger log;
    ServiceLocator::Put<ICLogger>(&log);
    const char* const fqdn = NetworkUtils::GetFqdn();
    std::printf("%s %s %s", fqdn, NetworkUtils::GetHostName(), NetworkUtils::GetDomainName());
    return 0;
});

}  // namespace

// Found out once a process: each case is one. Only here can they be made to fail.
TEST(NetworkNames, FallBackFromOneToTheNext) {
    char text[256] = "";
    ::gethostname(text, sizeof text - 1);
    const std::string own = std::string(text).substr(0, std::string(text).find('.'));
    const std::pair<const char*, std::string> cases[] = {
        {"ql", own + ' ' + own + " (unknown)"},
        {"m", own + ' ' + own + " (unknown)"},
        {"hql", "unknown_host unknown_host (unknown)"},
        {"h", "localhost unknown_host (unknown)"},
        {"hqls", "WSAStartup failed unknown_host unknown_host\nunknown_host unknown_host (unknown)"},
    };
    for (const auto& [faults, expected] : cases)
        EXPECT_EQ(test::RunChild("network-names", {faults}).out, expected) << faults;
}

/// silent-name-servers SECONDS: prints the qualified name, and whether it is the host's name.
const test::ChildMode silentNameServers("silent-name-servers", [](const std::vector<std::string>& arguments) {
    test::TheFailingCalls().addressInfoSeconds = std::stoi(arguments[0]);
    std::printf("%s", std::string(NetworkUtils::GetFqdn()) == NetworkUtils::GetHostName() ? "host" : "other");
    std::fflush(stdout);
    ::_exit(0);  // the search is still under way
    return 0;
});

// The name servers answer a minute after the test's program would be ended.
TEST(NetworkNames, ASilentServerCostsALimitedTimeAndAFailureIsNotKept) {
    char text[256] = "";
    ::gethostname(text, sizeof text - 1);
    if (std::string(text).find('.') != std::string::npos)
        GTEST_SKIP() << "the machine needs no server for its name";
    EXPECT_EQ(test::RunChild("silent-name-servers", {"1"}).out, "host");
    EXPECT_EQ(test::RunChild("silent-name-servers", {"300"}).out, "host");
}

TEST(NetworkNames, SocketsStartOnceForAllThreadsAndAgainAfterAFailure) {
    const test::RecordingLogger log;
    WindowsSockets& sockets = *WindowsSockets::GetInstance();
    sockets.ReleaseSockets();
    Sockets::Process().FailStarts(true);
    EXPECT_FALSE(sockets.InitializeSockets());
    EXPECT_THAT(log.Lines(ICLogger::Level::Error), testing::ElementsAre("WSAStartup failed"));
    Sockets::Process().FailStarts(false);
    const int before = Sockets::Process().CountStarts();
    test::Threads(16, [&](int) {
        EXPECT_TRUE(sockets.InitializeSockets() && *NetworkUtils::GetFqdn() != 0);
    }).Join();
    EXPECT_EQ(Sockets::Process().CountStarts() - before, 1);
}

}  // namespace quillon
