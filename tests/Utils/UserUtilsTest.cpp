#include "quillon/UserUtils.h"

#include <gmock/gmock.h>

#include "support/System.h"

namespace quillon {

namespace {

/// The system's type of these two fields, which this program does not see on Windows.
struct Luid {
    std::uint32_t low;
    std::int32_t high;

    operator const LUID&() const { return reinterpret_cast<const LUID&>(*this); }
};

}  // namespace

TEST(UserUtilsIsUser, OnlyAKnownUserIsOne) {
    const std::tuple<const wchar_t*, bool, const char*> cases[] = {
        {L"S-1-22-1-0", true, "the first user"},
        {L"s-1-22-1-0", true, "lower case"},
        {L"S-1-22-1-4123456789", false, "no such user"},
        {L"S-1-22-1-4294967296", false, "past 32 bits"},
        {L"S-1-22-2-0", false, "a group"},
        {L"S-1-5-18", false, "the local system"},
        {L"S-1-5-21-1-2-3-4", false, "a domain that nobody knows"},
        {L"", false, "empty"},
        {L"S-1-22-1-0x", false, "rest"},
        {L"S-1-281474976710656-1-0", false, "authority past 48 bits"},
        {L"S-1-22-1-1-1-1-1-1-1-1-1-1-1-1-1-1-1-1", false, "sixteen numbers"},
    };
    int errors = 0;
    for (const auto& [sid, onLinux, what] : cases)
        EXPECT_EQ(UserUtils::IsUser(sid, [&](const std::string&) { ++errors; }), !test::kWindows && onLinux)
            << what;
    EXPECT_FALSE(UserUtils::IsUser(L"S-1-5-21" + std::wstring(10'000'000, L'-'), {}));
    EXPECT_EQ(errors, 0);
}

TEST(UserUtilsLuid, HasTextAndEquality) {
    EXPECT_EQ(UserUtils::LuidToString(Luid{999, 0}), "999:0");
    EXPECT_EQ(UserUtils::LuidToString(Luid{0xFFFFFFFF, -2147483647 - 1}), "4294967295:-2147483648");
    EXPECT_TRUE(UserUtils::SameLuid(Luid{1, 2}, Luid{1, 2}));
    EXPECT_FALSE(UserUtils::SameLuid(Luid{1, 2}, Luid{2, 1}));
    EXPECT_FALSE(UserUtils::SameLuid(Luid{1, 2}, Luid{1, -2}));
}

}  // namespace quillon
