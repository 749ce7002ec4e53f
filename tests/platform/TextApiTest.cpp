#include "platform/TextApi.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/ErrorText.h"
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

TEST(TextApi, LastErrorBelongsToItsThreadAndSurvivesTheTextLookUp) {
    SetLastErrorCode(32);
    EXPECT_EQ(LastError(), 32u);
    EXPECT_EQ(StringUtils::GetLastErrorAsString().rfind("(32/0X20) ", 0), 0u);
    EXPECT_EQ(ErrorCodeText(0x2FFF0001), std::nullopt);
    EXPECT_EQ(LastError(), 317u) << "no such message";
}

}  // namespace
}  // namespace quillon::platform
