// The pipe at which the agent serves; posix/ListenerTest.cpp tests the socket.
#include <gmock/gmock.h>

#include <windows.h>

#include <thread>

#include "support/RecordingLogger.h"
#include "system/Listener.h"

namespace quillon::test {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class Client {
public:
    explicit Client(const std::string& name)
        : m_pipe(::CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                               nullptr)) {
        EXPECT_NE(m_pipe, INVALID_HANDLE_VALUE);
    }
    ~Client() { ::CloseHandle(m_pipe); }
    HANDLE Get() const { return m_pipe; }

private:
    HANDLE m_pipe;
};

class Listener : public testing::Test {
protected:
    std::unique_ptr<agent::Listener> Open() {
        std::string fault;
        auto listener = agent::Listen(name, fault);
        EXPECT_THAT(fault, IsEmpty());
        return listener;
    }

    const std::string name = R"(\\.\pipe\quillon-test-)" + std::to_string(::GetCurrentProcessId());
    RecordingLogger log;
};

}  // namespace

TEST_F(Listener, PassesBytesBothWaysAndTakesOneClientAfterTheOther) {
    const auto listener = Open();
    for (int i = 0; i < 3; ++i) {
        const Client client(name);
        const auto channel = listener->Accept();
        ASSERT_NE(channel, nullptr);
        DWORD count = 0;
        ASSERT_TRUE(::WriteFile(client.Get(), "ask", 3, &count, nullptr));
        char bytes[16] = {};
        EXPECT_EQ(channel->Read(bytes, sizeof bytes), 3U);
        EXPECT_STREQ(bytes, "ask");
        EXPECT_TRUE(channel->Write("answer"));
        ASSERT_TRUE(::ReadFile(client.Get(), bytes, sizeof bytes, &count, nullptr));
        EXPECT_STREQ(bytes, "answer");
    }
}

/// That a name is taken already cannot be tested here: the emulator takes no notice of
/// FILE_FLAG_FIRST_PIPE_INSTANCE.
TEST_F(Listener, RefusesANameThatIsNoPipe) {
    std::string fault;
    EXPECT_EQ(agent::Listen("C:\\agent.sock", fault), nullptr);
    EXPECT_THAT(fault, HasSubstr("begins with \\\\.\\pipe\\"));
}

TEST_F(Listener, AClientThatIsGoneAtOnceIsNotTheLast) {
    const auto listener = Open();
    { const Client hasty(name); }
    std::unique_ptr<agent::Channel> channel;
    std::thread acceptor([&] { channel = listener->Accept(); });
    EXPECT_TRUE(::WaitNamedPipeA(name.c_str(), 10'000));
    const Client client(name);
    acceptor.join();
    EXPECT_NE(channel, nullptr);
}

TEST_F(Listener, StopsWaitingOnAnyThreadAndTellsTheEndOfAClient) {
    const auto listener = Open();
    char byte = 0;
    std::unique_ptr<agent::Channel> gone;
    {
        const Client client(name);
        gone = listener->Accept();
        ASSERT_NE(gone, nullptr);
        EXPECT_FALSE(gone->IsGone());
    }
    EXPECT_TRUE(gone->IsGone());
    EXPECT_EQ(gone->Read(&byte, 1), 0U);
    const Client client(name);
    const auto channel = listener->Accept();
    ASSERT_NE(channel, nullptr);
    std::thread reader([&] { EXPECT_EQ(channel->Read(&byte, 1), 0U); });
    std::thread acceptor([&] { EXPECT_EQ(listener->Accept(), nullptr); });
    channel->Stop();
    listener->Stop();
    reader.join();
    acceptor.join();
}

/// A client that reads nothing is given up, whatever the size of the answer.
TEST_F(Listener, GivesUpAClientThatTakesNothing) {
    const auto listener = Open();
    const Client client(name);
    const auto channel = listener->Accept();
    ASSERT_NE(channel, nullptr);
    EXPECT_FALSE(channel->Write(std::string(8 << 20, 'x')));
}

}  // namespace quillon::test
