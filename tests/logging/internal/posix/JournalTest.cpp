#include <gmock/gmock.h>

#include <array>

#include "platform/Handle.h"
#include "quillon/SystemLoggers.h"
#include "support/TempDir.h"
#include "support/posix/LocalSocket.h"

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
    const std::string path = dir.Native("socket").string();
    const platform::FileHandle socket(LocalSocket(path, SOCK_DGRAM, &::bind));
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
