#include "quillon/IpRanges.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "support/Split.h"

namespace quillon {

namespace {

using Mapped = IpRanges::Mapped;
using testing::HasSubstr;

IpRanges Read(const std::string& list, Mapped mapped = Mapped::AsIpv6) {
    std::string problem;
    const auto ranges = IpRanges::Read(list, problem, mapped);
    EXPECT_TRUE(ranges) << list << ": " << problem;
    return ranges.value_or(IpRanges());
}

}  // namespace

TEST(IpRanges, ReadsAddressesStrictly) {
    for (const char* const text : {"0.0.0.0", "255.255.255.255", "::", "1::", "::8", "1:2:3:4:5:6:7:8",
                                   "1:2:3:4:5:6:7::", "::2:3:4:5:6:7:8", "2001:DB8::a", "::ffff:1.2.3.4",
                                   "1:2:3:4:5:6:1.2.3.4", "64:ff9b::192.0.2.33"})
        EXPECT_TRUE(IpRanges::IsAddress(text)) << text;
    for (const std::string& text : test::Split("1.2.3 1.2.3.4.5 1.2.3.256 01.2.3.4 1.2.3.04 +1.2.3.4 "
                                               "1..2.3 0x1.2.3.4 : ::: 1: :1 1::2::3 12345:: "
                                               "1:2:3:4:5:6:7 1:2:3:4:5:6:7:8:9 1:2:3:4:5:6:7:8:: "
                                               "::1:2:3:4:5:6:7:8 g:: ::1%1 [::1] ::1.2.3 ::1.2.3.4:5 "
                                               "1.2.3.4:: 1:2:3:4:5:6:7:1.2.3.4 ::01.2.3.4"))
        EXPECT_FALSE(IpRanges::IsAddress(text)) << text;
    for (const std::string& text : {std::string(), std::string("1.2.3.4 "), std::string("1.2.3.4\0", 8)})
        EXPECT_FALSE(IpRanges::IsAddress(text)) << text;
}

TEST(IpRanges, HoldsWhatItsPiecesHold) {
    const IpRanges ranges =
        Read(" 10.0.0.0/30 , 10.0.0.9-10.0.0.5,10.0.0.7 - 10.0.0.12, 192.168.1.77/25, ::1, fe80::/10");
    for (const char* const text : {"10.0.0.0", "10.0.0.3", "10.0.0.5", "10.0.0.12", "192.168.1.0",
                                   "192.168.1.127", "::1", "fe80::1", "febf:ffff::"})
        EXPECT_EQ(ranges.Holds(text), true) << text;
    for (const char* const text : {"9.255.255.255", "10.0.0.4", "10.0.0.13", "192.168.1.128", "::", "::2",
                                   "fec0::", "::ffff:10.0.0.1"})
        EXPECT_EQ(ranges.Holds(text), false) << text;
    EXPECT_EQ(ranges.Holds("10.0.0"), std::nullopt);
    EXPECT_EQ(Read("0.0.0.0/0").Holds("255.255.255.255"), true);
    EXPECT_EQ(Read("0.0.0.0/0").Holds("::"), false);
    EXPECT_EQ(IpRanges().Holds("10.0.0.1"), false);
}

TEST(IpRanges, ReadsMappedAddressesAsTheCallerWishes) {
    EXPECT_EQ(Read("10.0.0.0/8", Mapped::AsIpv4).Holds("::ffff:10.1.2.3"), true);
    EXPECT_EQ(Read("::ffff:10.0.0.0/104", Mapped::AsIpv4).Holds("10.1.2.3"), true);
    EXPECT_EQ(Read("::ffff:10.0.0.0/104", Mapped::AsIpv4).Holds("11.1.2.3"), false);
    EXPECT_EQ(Read("::ffff:10.0.0.0/104").Holds("::ffff:10.1.2.3"), true);
    EXPECT_EQ(Read("::ffff:10.0.0.0/104").Holds("10.1.2.3"), false);
}

TEST(IpRanges, NamesThePieceThatIsMalformed) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "piece 1 '': it is empty"},
        {"10.0.0.1,", "piece 2 '': it is empty"},
        {"10.0.0.1, 10.0.0.0/33", "piece 2 '10.0.0.0/33': the length is more than 32"},
        {"::/129", "the length is more than 128"},
        {"10.0.0.0/", "'' is no length"},
        {"10.0.0.0/+8", "'+8' is no length"},
        {"10.0.0.0/8/8", "'8/8' is no length"},
        {"10.0.0.1-::1", "its ends are of different families"},
        {"10.0.0.1-010.0.0.2", "'010.0.0.2' is no address"},
        {"10.0.0.1-10.0.0.2-10.0.0.3", "'10.0.0.2-10.0.0.3' is no address"},
    };
    for (const auto& [list, expected] : cases) {
        std::string problem;
        EXPECT_FALSE(IpRanges::Read(list, problem)) << list;
        EXPECT_THAT(problem, HasSubstr(expected)) << list;
    }
    std::string problem;
    EXPECT_FALSE(IpRanges::Read("::ffff:10.0.0.0/95", problem, Mapped::AsIpv4));
    EXPECT_THAT(problem, HasSubstr("a length of 96 at least"));
}

}  // namespace quillon
