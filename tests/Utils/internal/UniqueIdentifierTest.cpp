#include <gmock/gmock.h>

#include <string>

#include "platform/ole/OleTypes.h"
#include "quillon/UniqueIdentifier.h"

namespace quillon {
namespace {

TEST(UniqueIdentifierGuid, TurnsTheFirstThreeFieldsRoundAndBack) {
    const GUID guid{0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
    EXPECT_EQ(UniqueIdentifier(guid).ToString(), "00112233-4455-6677-8899-aabbccddeeff");
    EXPECT_EQ(UniqueIdentifier(guid).ToMsGuid().Data1, 0x00112233u);
}

TEST(UniqueIdentifierGenerate, GivesDifferentRandomIdentifiersOfVersionFour) {
    const std::string first = UniqueIdentifier::Generate().ToString();
    const std::string second = UniqueIdentifier::Generate().ToString();
    EXPECT_EQ(first[14], '4') << first;
    EXPECT_THAT("89ab", testing::HasSubstr(first.substr(19, 1))) << first;
    EXPECT_NE(first.substr(0, 8), second.substr(0, 8));
}

}  // namespace
}  // namespace quillon
