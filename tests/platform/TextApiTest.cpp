#include "platform/TextApi.h"

#include <gtest/gtest.h>

#include "platform/CodePageApi.h"
#include "platform/ole/OleTypes.h"
#include "quillon/StringUtils.h"
#include "support/System.h"

namespace quillon::platform {
namespace {

using namespace std::string_literals;

std::string FromBstr(const std::wstring& text) {
    _bstr_t bstr(SysAllocStringLen(text.data(), static_cast<unsigned int>(text.size())), false);
    return StringUtils::ConvertBSTRToNarrowString(bstr.GetBSTR());
}

TEST(TextApiBstr, IsConvertedToTheAnsiCodePageByItsOwnCount) {
    EXPECT_EQ(FromBstr(L""), "");
    EXPECT_EQ(FromBstr(L"a\0b"s), "a\0b"s) << "embedded zeros are kept";
    EXPECT_EQ(FromBstr({0xE9, 0x20AC, 0x178}), test::kWindows ? "\xE9\x80\x9F" : "\u00E9\u20AC\u0178");
    EXPECT_EQ(FromBstr({L'<', 0x4E2D, L'>'}), test::kWindows ? "<?>" : "<\u4E2D>");
    EXPECT_EQ(StringUtils::ConvertBSTRToNarrowString(nullptr), "");
}

TEST(CodePageApi, ConvertsWholeTextsByTheWindowsNumberOfTheirPage) {
    const auto repeated = [](const std::string& text) {
        std::string all;
        for (int i = 0; i < 5000; ++i) all += text;
        return all;
    };
    const std::tuple<std::uint32_t, std::string, std::string> cases[] = {
        {437, "\x82", "\xC3\xA9"},
        {932, repeated("\x82\xA0"), repeated("\xE3\x81\x82")},
        // A mark could follow the last character of these two.
        {1255, "\xF9", "\xD7\xA9"},
        {1258, "x\xEF\xBF", "x\xC3\xAF\xC2\xBF"},
        {20866, "\xC1", "\xD0\xB0"},
        {28591, "\xE9", "\xC3\xA9"},
        {28605, "\xA4", "\xE2\x82\xAC"},
        {65001, "\xC3\xA9\xFFx", "\xC3\xA9\xEF\xBF\xBDx"},
    };
    for (const auto& [page, bytes, text] : cases) {
        if (page == 28605 && !CodePageToUtf8("x", page)) continue;  // not every system has it
        EXPECT_EQ(CodePageToUtf8(bytes, page), text) << page;
    }
    EXPECT_EQ(CodePageToUtf8("x", 4711), std::nullopt);
}

}  // namespace
}  // namespace quillon::platform
