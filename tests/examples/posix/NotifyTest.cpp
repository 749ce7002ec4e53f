#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>

#include "examples/RunAgent.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

/// The socket of a service manager.
class Manager {
public:
    explicit Manager(const std::string& name) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (name[0] == '@') address.sun_path[0] = '\0';
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        EXPECT_EQ(::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), size), 0);
    }
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
    int m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
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
