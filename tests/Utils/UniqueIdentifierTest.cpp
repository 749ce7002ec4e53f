#include "quillon/UniqueIdentifier.h"

#include <gmock/gmock.h>

#include <unordered_set>

namespace quillon {
namespace {

using namespace std::string_literals;

constexpr int kHuge = 10'000'000;

TEST(UniqueIdentifier, IsReadAsTheCLibraryReadsBytePairs) {
    const std::tuple<std::string, bool, std::string> cases[] = {
        {"00112233x4455\0"s + "6677}8899{AABBCCDDEEFF", true, "00112233-4455-6677-8899-aabbccddeeff"},
        {"{00112233-4455-6677-8899-aabbccddeeff}", true, "00112233-4455-6677-8899-aabbccddeeff"},
        {"{00112233-4455-6677-8899-aabbccddeeff)", false, "00112233-4455-6677-8899-aabbccddeeff"},
        {" 0\t1+2-1-4z0X-0g66-8899-aabbccddeeff", true, "000102ff-0400-0066-8899-aabbccddeeff"},
        {"0011  33-4455-6677-8899-aabbccddeeff", false, "00110000-0000-0000-0000-000000000000"},
        {"0011+-33-4455-6677-8899-aabbccddeeff", false, "00110000-0000-0000-0000-000000000000"},
        {"00112233-4455-6677-8899-aabbccddee\0"s + "f", false, "00112233-4455-6677-8899-aabbccddee00"},
        {std::string(kHuge, '1'), false, "00000000-0000-0000-0000-000000000000"},
    };
    for (const auto& [text, isValid, printed] : cases) {
        SCOPED_TRACE(text.substr(0, 40));
        bool ok = !isValid;
        EXPECT_EQ(UniqueIdentifier::Parse(text, &ok).ToString(), printed);
        EXPECT_EQ(ok, isValid);
    }
}

TEST(UniqueIdentifier, IsOrderedByItsBytesAsUnsignedValues) {
    const unsigned char bytes[2][16] = {{0x7F, 0xFF}, {0x80, 0}};
    const UniqueIdentifier low(bytes[0]);
    const UniqueIdentifier high(bytes[1]);
    EXPECT_LT(low, high);
    EXPECT_FALSE(high < low || high.IsEmpty() || !UniqueIdentifier().IsEmpty());
    EXPECT_EQ((std::unordered_set<UniqueIdentifier>{low, high, low}.size()), 2u);
    EXPECT_EQ(low.ToStringJustHex(), "7fff0000000000000000000000000000");
    unsigned char copy[16];
    high.ToBinary(copy);
    EXPECT_EQ(copy[0], 0x80);
}

}  // namespace
}  // namespace quillon
