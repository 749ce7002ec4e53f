#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>

#include "platform/Handle.h"
#include "quillon/SystemLoggers.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using JournalTest = TempDirTest;

/// The datagram that the socket has got; it waits for none.
std::string Received(const platform::FileHandle& socket) {
    std::array<char, 20'000> buffer{};
    const ::ssize_t count = ::recv(socket.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    return count < 0 ? "none" : std::string(buffer.data(), static_cast<std::size_t>(count));
}

}  // namespace

TEST_F(JournalTest, EntriesAreDatagramsOfFields) {
    ::sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = dir.Native("socket").string();
    std::copy(path.begin(), path.end(), address.sun_path);
    const platform::FileHandle socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(socket.Get(), reinterpret_cast<const ::sockaddr*>(&address), sizeof address), 0);
    JournalLogger log("agent", path);
    log.Error("two\nlines");
    const std::string zeros(7, '\0');
    EXPECT_THAT(Received(socket),
                testing::StartsWith("MESSAGE\n\x09" + zeros + "two\nlines\nPRIORITY\n\x01" + zeros +
                                    "3\nSYSLOG_IDENTIFIER\n\x05" + zeros + "agent\nTID\n"));
    log.Debug("suppressed");
    EXPECT_EQ(Received(socket), "none");
}

}  // namespace quillon::test
