#include "support/posix/FailingCalls.h"

#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

#include <array>

namespace quillon::test {

namespace {

struct Codes {
    int hostName, addressInfo, nameInfo;
    bool operator==(const Codes&) const = default;
};

Codes CallAll() {
    std::array<char, 256> text{};
    sockaddr_in address{};
    address.sin_family = AF_INET;
    addrinfo* list = nullptr;
    const Codes codes = {::gethostname(text.data(), text.size()),
                         ::getaddrinfo("127.0.0.1", nullptr, nullptr, &list),
                         ::getnameinfo(reinterpret_cast<const sockaddr*>(&address), sizeof address,
                                       text.data(), text.size(), nullptr, 0, NI_NUMERICHOST)};
    if (list != nullptr) ::freeaddrinfo(list);
    return codes;
}

}  // namespace

TEST(FailingCalls, EachFailsAloneAndOnlyWhileItIsTold) {
    FailingCalls& calls = TheFailingCalls();
    EXPECT_EQ(CallAll(), Codes());
    calls.hostName = true;
    EXPECT_EQ(CallAll(), (Codes{-1, 0, 0}));
    calls.hostName = false;
    calls.addressInfo = true;
    EXPECT_EQ(CallAll(), (Codes{0, EAI_FAIL, 0}));
    calls.addressInfo = false;
    calls.nameInfo = true;
    EXPECT_EQ(CallAll(), (Codes{0, 0, EAI_FAIL}));
    calls.nameInfo = false;
    EXPECT_EQ(CallAll(), Codes());
}

}  // namespace quillon::test
