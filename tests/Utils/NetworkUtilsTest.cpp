#include "quillon/NetworkUtils.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <utility>

#include "quillon/DataTable.h"
#include "quillon/WindowsSockets.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/Split.h"
#include "support/System.h"

namespace quillon {

namespace {

using Level = ICLogger::Level;
using testing::IsEmpty;

constexpr int kIpv4 = 2, kIpv6 = 23;

class NetworkUtilsTest : public testing::Test {
protected:
    NetworkUtilsTest() { EXPECT_TRUE(WindowsSockets::GetInstance()->InitializeSockets()); }

    test::RecordingLogger m_log;
};

/// What the system calls the address that it read; "none" when it read none.
std::string Reread(int family, const std::string& text) {
    std::array<unsigned char, 32> address;
    address.fill(0xA5);
    const auto before = address;
    if (NetworkUtils::XpFriendlyIpStringToAddress(family, text.c_str(), address.data()))
        return NetworkUtils::XpFriendlyAddressToIpString(family, address.data(), family == kIpv4 ? 0 : 28);
    EXPECT_EQ(address, before) << "a failure leaves the address alone";
    return "none";
}

std::vector<std::string> Lines(const std::string& text) { return test::Split(text, '|'); }

/// What works before the sockets are started, after that, and when they are released again.
const test::ChildMode startOfSockets("start-of-sockets", [](const std::vector<std::string>&) {
    const auto show = [] {
        std::printf("%s %d %d\n", Reread(kIpv4, "10.1").c_str(),
                    NetworkUtils::IpInRange("10.0.0.5", "10.0.0.1-10.0.0.9"),
                    NetworkUtils::XpFriendlyIpStringToAddress(kIpv4, "10.1", std::array<char, 32>().data()));
    };
    show();
    WindowsSockets::GetInstance()->InitializeSockets();
    show();
    WindowsSockets::GetInstance()->ReleaseSockets();
    show();
    std::unique_ptr<addrinfo, void (*)(addrinfo*)> list(nullptr, &NetworkUtils::FreeAddrInfoRobust);
    std::printf("%d\n", NetworkUtils::getaddrinfo_OrTimeout("127.0.0.1", "80", nullptr, list, 30));
    return 0;
});

}  // namespace

TEST(NetworkStart, AddressesNeedStartedSocketsAndRangesDoNot) {
    if (test::kWindows) GTEST_SKIP() << "the emulator converts addresses without them";
    EXPECT_EQ(test::RunChild("start-of-sockets").out, "none 1 0\n10.0.0.1 1 1\nnone 1 0\n0\n");
}

TEST_F(NetworkUtilsTest, AddressesAreReadAsWindowsReadsThem) {
    const std::pair<const char*, const char*> cases[] = {
        {"10.1.2.3|255.255.255.255", "10.1.2.3|255.255.255.255"},
        {"010.0x10.0X1f.0|10.1|10.1.65535|4294967295", "8.16.31.0|10.0.0.1|10.1.255.255|255.255.255.255"},
        {"10.1.2.3:0x50|10.1.2.3:010", "10.1.2.3:80|10.1.2.3:8"},
        {"[2001:DB8::A]:65535|[::1]|fe80::1%5", "[2001:db8::a]:65535|::1|fe80::1%5"},
        {"::ffff:1.2.3.4|1:2:3:4:5:6:7::", "::ffff:1.2.3.4|1:2:3:4:5:6:7:0"},
    };
    for (const auto& [texts, expected] : cases) {
        SCOPED_TRACE(texts);
        std::string read;
        for (const std::string& text : Lines(texts))
            read += '|' + Reread(text.find("::") == std::string::npos ? kIpv4 : kIpv6, text);
        EXPECT_EQ(read, std::string("|") + expected);
    }
}

TEST_F(NetworkUtilsTest, WhatIsNoAddressIsRefused) {
    const std::string both = std::string(100'000, '9') + '|' + std::string(100'000, ':') + "|||\xFF|";
    for (const std::string& text :
         Lines(both +
               " 1.2.3.4|1.2.3.4 |1.2.3.256|256.1.1.1|08.0.0.1|1.2.3.0400|1.2.65536|1.2.3.|.1.2.3|1..2.3|"
               "1.2.3.4.5|0x.1.1.1|-1.2.3.4|+1.2.3.4|4294967296|1.2.3.4:|1.2.3.4:0|1.2.3.4:65536|"
               "1.2.3.4:08|1.2.3.4a|::1|[1.2.3.4]"))
        EXPECT_EQ(Reread(kIpv4, text), "none") << text.substr(0, 20);
    for (const std::string& text :
         Lines(both +
               "1.2.3.4|::1 |[::1|::1]|[::1]:0|[::1]:|[::1]x|12345::|1::2::3|1:::2|:1|::1:|::1%|::1%eth0|"
               "::1%4294967296|1:2:3:4:5:6:7:8:9"))
        EXPECT_EQ(Reread(kIpv6, text), "none") << text.substr(0, 20);
    for (const int family : {0, 1, 10, 24, -1}) EXPECT_EQ(Reread(family, "10.1.2.3"), "none") << family;
    unsigned char unknown[28] = {9}, ipv4[28] = {2};
    EXPECT_EQ(NetworkUtils::XpFriendlyAddressToIpString(kIpv4, unknown, 28), "");
    EXPECT_EQ(NetworkUtils::XpFriendlyAddressToIpString(kIpv4, ipv4, 15), "");
}

TEST_F(NetworkUtilsTest, AnAddressLiesInARangeOrNot) {
    const std::pair<const char*, const char*> inside[] = {
        {"10.0.0.5", "10.0.0.10-10.0.0.1"}, {" 10.0.0. 5", "1.1.1.1-2.2.2.2,10.0.0.1 - 10.0.0.9\t"},
        {"10.0.0.5", "10.0.0.5-10.0.0.5"},  {"200.0.0.1", "127.0.0.0-255.0.0.0"},
        {"8.0.0.1", "010.0.0.1-010.0.0.1"}, {"0x8.1", "8.0.0.1-8.0.0.1"},
    };
    for (const auto& [address, ranges] : inside)
        EXPECT_TRUE(NetworkUtils::IpInRange(address, ranges)) << ranges;
    EXPECT_FALSE(NetworkUtils::IpInRange("10.0.0.5", "1.1.1.1-10.0.0.4,10.0.0.6-255.255.255.255"));
    EXPECT_FALSE(NetworkUtils::IpInRange("1.1.1.1", "0.0.0.256-9.9.9.9,0.0.0.08-9.9.9.9"));
    EXPECT_THAT(m_log.Lines(), IsEmpty());
    EXPECT_TRUE(NetworkUtils::IpInRange("10.0.0.5", "::1 - ::2,10.0.0.1-10.0.0.9"));
    EXPECT_THAT(m_log.Lines(Level::Warn), testing::ElementsAre("Unsupported IPv6 range found: '::1-::2'"));
}

TEST_F(NetworkUtilsTest, FaultsOfRangesAreLogged) {
    for (const std::string& piece :
         Lines("|abc|10.0.0.1--10.0.0.9|10.0.0.1-10.0.0.9-10.0.0.9|10.0.0.1-10.0.0.0009|10.0.1-10.0.0.9|-|"
               "10.0.0.1\xE2\x80\x93"
               "10.0.0.9|10.0.0.1-10.0.0.9x|10.0.0.1-|-10.0.0.9|10.0.0.5")) {
        SCOPED_TRACE(piece);
        m_log.Forget();
        EXPECT_FALSE(NetworkUtils::IpInRange("10.0.0.5", "10.0.0.1-10.0.0.9, " + piece + " ,::1"));
        EXPECT_THAT(m_log.Lines(), testing::ElementsAre("Unexpected IP range found: '" + piece + '\''));
    }
    const std::string zero(1, '\0');
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"10.0.0.5", "10.0.0.1-10.0.0.9" + zero, "Unexpected IP range found: '10.0.0.1-10.0.0.9'"},
        {"10.0.0.5", "::1 - ::2", "No IP ranges found in string supplied to IpInRange(): '::1 - ::2'"},
        {"fe80:: 1", "x", "Unsupported IPv6 address supplied to IpInRange(): 'fe80:: 1'"},
        {"10.0.0.256", "x", "IP address supplied to IpInRange() is not a valid IPv4 address: '10.0.0.256'"},
        {"10.5" + zero, "x", "IP address supplied to IpInRange() is not a valid IPv4 address: '10.5'"},
    };
    for (const auto& [address, ranges, message] : cases) {
        SCOPED_TRACE(ranges);
        EXPECT_FALSE(NetworkUtils::IpInRange(address, ranges));
        EXPECT_EQ(m_log.Lines().back(), message);
    }
}

TEST_F(NetworkUtilsTest, LongListsAndLongPiecesAreRead) {
    std::string ranges;
    for (int i = 0; i < 10'000; ++i) ranges += "11.0." + std::to_string(i % 256) + ".0-11.0.0.0,";
    EXPECT_TRUE(NetworkUtils::IpInRange("10.0.0.5", ranges + "10.0.0.0-10.0.0.9"));
    EXPECT_FALSE(NetworkUtils::IpInRange("10.0.0.5", ranges + "10.0.0.6-10.0.0.9"));
    EXPECT_THAT(m_log.Lines(), IsEmpty());
    for (const char c : {'1', ':', '.', '-', ' '}) {
        SCOPED_TRACE(c);
        EXPECT_FALSE(NetworkUtils::IpInRange("10.0.0.5", ranges + std::string(100'000, c)));
        EXPECT_EQ(NetworkUtils::FqdnOrBlank("a" + std::string(100'000, c) + "!"), "");
        EXPECT_EQ(NetworkUtils::IpAddressOrBlank(std::string(100'000, c) + "]x"), "");
    }
}

TEST_F(NetworkUtilsTest, TextsThatHaveTheFormAreKept) {
    for (const std::string& name : Lines("host.example-1.com|1a1|-a-|.a."))
        EXPECT_EQ(NetworkUtils::FqdnOrBlank(name), name) << name;
    for (const std::string& text : Lines("|a11|11a|ab|Host.example.com|10.0.0.1|host\n|h\xC3\xA9t"))
        EXPECT_EQ(NetworkUtils::FqdnOrBlank(text), "") << text;
    for (const std::string& address : Lines("10.0.0.1|999.0.0.1|::|FE80::1|:1|1:2:3:4:5:6:7:8:9")) {
        for (const std::string& text : {address, '[' + address, address + ']', '[' + address + ']'})
            EXPECT_EQ(NetworkUtils::IpAddressOrBlank(text), address) << text;
    }
    for (const std::string& text : Lines("|host|[]|[[::1]]|FE80:|:|::1.2.3.4|10.0.0.0001|10.0.0|::1\n|::g"))
        EXPECT_EQ(NetworkUtils::IpAddressOrBlank(text), "") << text;
    EXPECT_EQ(NetworkUtils::FqdnOrBlank(std::string("host\0x", 6)), "");
}

TEST_F(NetworkUtilsTest, NetworksAreWritten) {
    for (const std::string& row : Lines(
             "10.1.2.3 255.255.255.0 10.1.2.0/24|10.1.2.3 255.255.0.0 10.1.0.0/16|10.1.2.3 0.0.0.0 0.0.0.0/0|"
             "10.1.2.3 255.0.255.0 10.0.2.0/24|10.1.2.3 0.0.0.1 0.0.0.1/32|300.1.2.3 511.0.0.0 300.0.0.0/8|"
             "10.+1.\t2.3x 255.255.255.128 10.1.2.0/25|10.1.2 255.0.0.0 |10.1.2.3 255.0.0. |10\t.1.2.3 "
             "1.1.1.1 ")) {
        const auto c = test::Split(row, ' ');
        EXPECT_EQ(NetworkUtils::GetNetworkCidrAddressFromAddressAndMask(c[0], c[1]), c[2]) << row;
    }
    unsigned char mac[] = {0, 0x1A, 0xFF};
    EXPECT_EQ(NetworkUtils::FormatMacAddressAsString(3, mac), "00-1a-ff");
    EXPECT_EQ(NetworkUtils::FormatMacAddressAsString(0, nullptr), "");
    EXPECT_EQ(NetworkUtils::FormatIpV4AddressAsString(0x0100007F), "127.0.0.1");
    const unsigned char low[8] = {0, 0, 0, 0, 1}, high[8] = {0, 0, 0, 0, 0, 0, 0, 0x80};  // as stored
    EXPECT_TRUE(NetworkUtils::IsIpv4AddressIsHigher(high, low) &&
                NetworkUtils::IsIpv4InRange(low, low, high));
    EXPECT_FALSE(NetworkUtils::IsIpv4AddressIsHigher(low, low) ||
                 NetworkUtils::IsIpv4InRange(low, high, high));
}

TEST_F(NetworkUtilsTest, AddressesLieInNetworksOfTheirKind) {
    for (const std::string& row : Lines("10.1.2.3 10.1.2.0/24|10.1.2.3 10.1.2.2/31|10.1.2.3 10.1.2.3/32|"
                                        "1.2.3.4 9.9.9.9/0|fe80::1 fe80::/10|fe80::1 fe80::1/128|::1 ::/0"))
        EXPECT_TRUE(NetworkUtils::IpInCidr(test::Split(row, ' ')[0], test::Split(row, ' ')[1])) << row;
    for (const std::string& row : Lines(
             "10.1.2.3 10.1.3.0/24|10.1.2.3 10.1.2.0/31|10.1.2.3 10.1.2.3/33|10.1.2.3 ::/0|10.1.2.3 10.1.2.0|"
             "10.1.2.3 10.1.2.0/|10.1.2.3 10.1.2.0/-1|10.1.2.3 10.1.2.0/24/|10.1.2.3 /0|10.1.2.3 |"
             "fe80::1 fec0::/10|fe80::1 fe80::1/129|fe80::1 0.0.0.0/0|fe80::1 fe80::%1/10|fe80::1 "
             "[fe80::]/10|"
             "10.1.2.3 010.1.2.0/24|10.1.2.3 10.1.2.00/24|10.1.2.3:80 0.0.0.0/0|[::1] ::/0|::1%1 ::/0| /0| "
             "0.0.0.0/0"))
        EXPECT_FALSE(NetworkUtils::IpInCidr(test::Split(row, ' ')[0], test::Split(row, ' ')[1])) << row;
    EXPECT_THAT(m_log.Lines(), IsEmpty());
}

TEST_F(NetworkUtilsTest, AdaptersAreListedWithTheirAddresses) {
    DataTable table;
    ASSERT_TRUE(NetworkUtils::GetAdapters(table));
    std::string loopback;
    for (const VariantList& row : table) {
        EXPECT_NE(row["Name"].AsString(), "");
        EXPECT_NE(row["Index"].AsString(), "0");
        const std::string address = row["Address"].AsString();
        if (row["Address"].IsNull()) continue;
        const bool isIpv4 = row["Family"].AsString() == "IPv4";
        EXPECT_EQ(NetworkUtils::IpAddressOrBlank(address), address);
        EXPECT_EQ(isIpv4, address.find(':') == std::string::npos) << address;
        const std::string cidr = address + '/' + row["Prefix"].AsString();
        EXPECT_TRUE(NetworkUtils::IpInCidr(address, cidr)) << cidr;
        if (address == "127.0.0.1")
            loopback = row["State"].AsString() + ' ' + cidr + ' ' + row["MacAddress"].AsString();
    }
    EXPECT_EQ(loopback, "up 127.0.0.1/8 null");
    EXPECT_THAT(m_log.Lines(), IsEmpty());
}

}  // namespace quillon
