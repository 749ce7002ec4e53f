// The socket at which the agent serves; win32/ListenerTest.cpp tests the pipe.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "support/RecordingLogger.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "support/posix/LocalSocket.h"
#include "system/Listener.h"

namespace quillon::test {

namespace {

using testing::HasSubstr;

/// Connects to a socket, and closes the connection at the end.
class Client {
public:
    explicit Client(const std::filesystem::path& path)
        : m_socket(LocalSocket(path.string(), SOCK_STREAM, &::connect)) {}
    ~Client() { ::close(m_socket); }
    int Get() const { return m_socket; }

private:
    int m_socket;
};

/// Leaves the process so many free descriptors.
class FewDescriptors {
public:
    explicit FewDescriptors(rlim_t free) {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &m_before), 0);
        const int lowest = ::open("/dev/null", O_RDONLY);
        ::close(lowest);
        rlimit few = m_before;
        few.rlim_cur = static_cast<rlim_t>(lowest) + free;
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    }
    ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &m_before); }

private:
    rlimit m_before{};
};

class Listener : public TempDirTest {
protected:
    std::unique_ptr<agent::Listener> Open() {
        std::string fault;
        auto listener = agent::Listen(dir.Path("agent.sock"), fault);
        EXPECT_THAT(fault, testing::IsEmpty());
        return listener;
    }

    const std::filesystem::path path = dir.Native("agent.sock");
    RecordingLogger log;
};

}  // namespace

TEST_F(Listener, PassesBytesBothWaysToItsOwnAccountOnly) {
    const mode_t mask = ::umask(0);
    const auto listener = Open();
    EXPECT_EQ(::umask(mask), 0U);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    const Client client(path);
    const auto channel = listener->Accept();
    ASSERT_NE(channel, nullptr);
    ASSERT_EQ(::send(client.Get(), "ask", 3, 0), 3);
    char bytes[16] = {};
    EXPECT_EQ(channel->Read(bytes, sizeof bytes), 3U);
    EXPECT_STREQ(bytes, "ask");
    EXPECT_TRUE(channel->Write("answer"));
    EXPECT_EQ(::recv(client.Get(), bytes, sizeof bytes, 0), 6);
    EXPECT_STREQ(bytes, "answer");
}

TEST_F(Listener, LeavesNothingBehindAndTakesTheLeftoverOfAKilledAgent) {
    std::string fault;
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(dir.Native());
    auto relative = agent::Listen("agent.sock", fault);
    std::filesystem::current_path(before);  // as a module may do
    EXPECT_TRUE(std::filesystem::exists(path));
    relative.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
    ::close(LocalSocket(path.string(), SOCK_STREAM, &::bind));  // nobody listens at it
    const auto listener = Open();
    EXPECT_EQ(agent::Listen(dir.Path("agent.sock"), fault), nullptr);  // somebody listens
    EXPECT_THAT(fault, HasSubstr("in use"));
    dir.Write("file", "content");
    EXPECT_EQ(agent::Listen(dir.Path("file"), fault), nullptr);
    EXPECT_EQ(dir.Read("file"), "content");
    EXPECT_EQ(agent::Listen(dir.Path(std::string(200, 'x')), fault), nullptr);
    EXPECT_THAT(fault, HasSubstr("1 to 107 bytes"));
}

TEST_F(Listener, OfManyThatStartAtOnceOneListens) {
    const mode_t mask = ::umask(0);
    for (int round = 0; round < 1'000; ++round) {
        std::array<std::unique_ptr<agent::Listener>, 4> listeners;
        Threads(4, [&](int number) {
            std::string fault;
            listeners.at(static_cast<std::size_t>(number)) = agent::Listen(dir.Path("agent.sock"), fault);
        });
        ASSERT_EQ(std::count(listeners.begin(), listeners.end(), nullptr), 3) << round;
    }
    ::umask(mask);
    EXPECT_TRUE(std::filesystem::is_empty(dir.Native()));
}

TEST_F(Listener, LeavesThePlaceToTheSocketThatTookIt) {
    auto former = Open();
    std::filesystem::remove(path);
    const auto latter = Open();
    former.reset();
    const Client client(path);
    EXPECT_NE(latter->Accept(), nullptr);
}

/// Each attempt leaves a client in the queue of the first, which has room for 64.
TEST_F(Listener, DoesNotWaitForAListenerThatHangs) {
    const auto listener = Open();
    std::string fault;
    for (int i = 0; i < 100; ++i) ASSERT_EQ(agent::Listen(dir.Path("agent.sock"), fault), nullptr);
    EXPECT_THAT(fault, HasSubstr("in use"));
}

TEST_F(Listener, StopsWaitingOnAnyThread) {
    const auto listener = Open();
    const Client client(path);
    const auto channel = listener->Accept();
    std::thread reader([&] {
        char byte = 0;
        EXPECT_EQ(channel->Read(&byte, 1), 0U);
    });
    std::thread acceptor([&] { EXPECT_EQ(listener->Accept(), nullptr); });
    channel->Stop();
    listener->Stop();
    reader.join();
    acceptor.join();
}

TEST_F(Listener, WhatCannotBeStoppedIsNotServed) {
    if (QUILLON_TEST_SLOWDOWN > 1) GTEST_SKIP() << "a sanitizer opens pipes of its own to look at memory";
    std::string fault;
    {
        const FewDescriptors one(1);
        EXPECT_EQ(agent::Listen(dir.Path("agent.sock"), fault), nullptr);
        EXPECT_THAT(fault, HasSubstr("open files"));
    }
    const auto listener = Open();
    const Client client(path);
    std::unique_ptr<agent::Channel> channel;
    std::thread acceptor;
    {
        const FewDescriptors one(1);
        acceptor = std::thread([&] { channel = listener->Accept(); });
        for (int i = 0; i < 3000 && log.Lines().empty(); ++i) ::usleep(10'000);
        EXPECT_THAT(log.Lines(), testing::Contains(HasSubstr("A client waits")));
    }
    acceptor.join();
    ASSERT_NE(channel, nullptr);
    channel->Stop();
    char byte = 0;
    EXPECT_EQ(channel->Read(&byte, 1), 0U);
}

TEST_F(Listener, TellsAClientThatIsGoneFromOneThatSaysNoMore) {
    const auto listener = Open();
    auto client = std::make_unique<Client>(path);
    const auto channel = listener->Accept();
    char byte = 0;
    EXPECT_FALSE(channel->IsGone());
    ::shutdown(client->Get(), SHUT_WR);
    EXPECT_EQ(channel->Read(&byte, 1), 0U);
    EXPECT_FALSE(channel->IsGone());
    client.reset();
    EXPECT_TRUE(channel->IsGone());
}

/// A client that reads nothing is given up, whatever the size of the answer.
TEST_F(Listener, GivesUpAClientThatTakesNothing) {
    const auto listener = Open();
    const Client client(path);
    const auto channel = listener->Accept();
    EXPECT_FALSE(channel->Write(std::string(8 << 20, 'x')));
}

TEST_F(Listener, RefusesAnotherAccount) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs the superuser";
    const auto listener = Open();
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(dir.Native().c_str(), 0755), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        char byte = 0;
        const bool isRefused = ::setuid(65534) == 0 && ::recv(Client(path).Get(), &byte, 1, 0) == 0;
        ::_exit(isRefused ? 0 : 1);
    }
    std::thread acceptor([&] { EXPECT_EQ(listener->Accept(), nullptr); });
    int status = -1;
    ::waitpid(child, &status, 0);
    listener->Stop();
    acceptor.join();
    EXPECT_EQ(status, 0);
    EXPECT_THAT(log.Lines(ICLogger::Level::Warn),
                testing::ElementsAre("A client of another account was refused"));
}

}  // namespace quillon::test
