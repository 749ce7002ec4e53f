#include "base/PathEscapes.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "base/Utf.h"

namespace quillon::base {
namespace {

TEST(PathEscapes, EveryNameIsUtf8AndNoTwoLookAlike) {
    // Those that are escaped, the halves of the escapes themselves, and what stands beside them.
    const std::wstring units = {L'n',   L'.',   L' ',   0xE9,   0xD7FF, 0xD800, 0xDBC0, 0xDBF5, 0xDBF6,
                                0xDBF7, 0xDBFF, 0xDC00, 0xDC20, 0xDC6E, 0xDC2E, 0xDFFF, 0xE000, 0xFFFD};
    std::mt19937 random(1);
    std::map<std::string, std::wstring> names;
    for (int i = 0; i < 200'000; ++i) {
        std::wstring name;
        for (auto left = random() % 6; left > 0; --left) name += units[random() % units.size()];
        const std::string path = PathToUtf8(name), listed = NameToUtf8(name);
        ASSERT_TRUE(Utf8ToWide(path) && Utf8ToWide(listed));
        ASSERT_EQ(PathToWide(path), name);
        ASSERT_EQ(PathToWide(listed), name);
        ASSERT_EQ(names.emplace(listed, name).first->second, name);
    }
}

TEST(PathEscapes, LeaveOrdinaryNamesAsTheyAre) {
    const std::tuple<std::wstring, std::string, bool> cases[] = {
        {L"", "", false},
        {L".", ".", false},
        {L"..", "..", false},
        {{L'a', 0xE9, 0xD83D, 0xDE00}, "a\xC3\xA9\xF0\x9F\x98\x80", false},
        {{L'a', 0xD800}, "a\xF4\x8D\xA0\x80", false},
        {{0xDFFF, L'a'}, "\xF4\x8D\xBF\xBF\x61", false},
        {{0xDBC0, 0xDC2E}, "\xF4\x8D\xAF\x80\xF4\x8D\xB0\xAE", false},  // U+10002E, a name's own
        {L"a..", "a.\xF4\x80\x80\xAE", true},
        {L"a ", "a\xF4\x80\x80\xA0", true},
        {L"nul", "\xF4\x80\x81\xAEul", true},
        {L"Com1.txt", "\xF4\x80\x81\x83om1.txt", true},
        {L"AUX .c.", "\xF4\x80\x81\x81UX .c\xF4\x80\x80\xAE", true},
        {{L'l', L'p', L't', 0xB2}, "\xF4\x80\x81\xACpt\xC2\xB2", true},
        {L"conin$", "\xF4\x80\x81\xA3onin$", true},
        {L"null", "null", false},
        {L"com10", "com10", false},
        {L"x.nul", "x.nul", false},
    };
    for (const auto& [name, listed, mustStay] : cases) {
        EXPECT_EQ(NameToUtf8(name), listed);
        EXPECT_EQ(MustStayAsItIs(ToWide(listed)), mustStay) << listed;
    }
    EXPECT_EQ(PathToUtf8(L"C:\\a.\\b "), "C:\\a.\\b ");
    EXPECT_EQ(PathToWide("a\xFF"), (std::wstring{L'a', 0xFFFD}));
}

}  // namespace
}  // namespace quillon::base
