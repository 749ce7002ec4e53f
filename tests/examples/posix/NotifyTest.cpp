#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include "examples/RunAgent.h"
#include "support/TempDir.h"
#include "support/posix/LocalSocket.h"

namespace quillon::test {

namespace {

/// The socket of a service manager.
class Manager {
public:
    explicit Manager(const std::string& name) : m_socket(LocalSocket(name, SOCK_DGRAM, &::bind)) {}
    ~Manager() { ::close(m_socket); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    /// The next message, or "none" when none has come.
    std::string Next() const {
        char text[64] = {};
        const ssize_t size = ::recv(m_socket, text, sizeof text, MSG_DONTWAIT);
        return size < 0 ? "none" : std::string(text, static_cast<std::size_t>(size));
    }

private:
    int m_socket;
};

}  // namespace

/// The agent is interrupted by the command of its own call, and has told of its end before it has ended.
TEST(AgentService, TellsTheServiceManagerWhenItServesAndWhenItEnds) {
    const TempDir dir;
    dir.Write(
        "call",
        R"({"id":1,"method":"Commands.Run","parameters":{"command":"cmd /c kill -TERM $PPID; sleep 60"}})"
        "\n");
    const std::string line = AgentCommand({"serve"}).Get() + " < " + dir.Native("call").string();
    for (const std::string& name :
         {dir.Native("manager").string(), "@quillon-test-" + std::to_string(::getpid())}) {
        SCOPED_TRACE(name);
        const Manager manager(name);
        const AgentRun run = RunLine("env NOTIFY_SOCKET=" + name + " sh -c \"" + line + '"');
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_THAT(run.output, testing::HasSubstr("Aborted due to Agent shutdown"));
        EXPECT_EQ(manager.Next(), "READY=1");
        EXPECT_EQ(manager.Next(), "STOPPING=1");
        EXPECT_EQ(manager.Next(), "none");
    }
    EXPECT_EQ(
        RunLine("env NOTIFY_SOCKET=" + dir.Native("nobody").string() + " sh -c \"" + line + '"').exitCode, 0);
}

}  // namespace quillon::test
