#include "platform/TextApi.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/ErrorText.h"
#include "platform/Utf.h"
#include "quillon/StringUtils.h"
#include "support/RecordingLogger.h"

namespace quillon::platform {
namespace {

using namespace std::string_literals;

std::string FromBstr(const std::wstring& text) {
    const BSTR bstr = AllocateBstr(text);
    std::string narrow = StringUtils::ConvertBSTRToNarrowString(bstr);
    FreeBstr(bstr);
    return narrow;
}

TEST(TextApiBstr, IsConvertedToTheAnsiCodePageByItsOwnCount) {
    EXPECT_EQ(FromBstr(L""), "");
    EXPECT_EQ(FromBstr(L"a\0b"s), "a\0b"s) << "embedded zeros are kept";
    EXPECT_EQ(FromBstr({0xE9, 0x20AC, 0x178}), "\xE9\x80\x9F");
    EXPECT_EQ(FromBstr({L'<', 0x4E2D, L'>'}), "<?>");
    EXPECT_EQ(StringUtils::ConvertBSTRToNarrowString(nullptr), "");
}

TEST(TextApi, TellsUtf16FromOtherBytes) {
    const auto utf16 = [](const char* text) { return *Utf8ToUtf16Bytes(text, false); };
    EXPECT_TRUE(LooksLikeUtf16(utf16("A line of text.\r\nAnother one, which is longer.\r\n")));
    EXPECT_TRUE(
        LooksLikeUtf16(utf16("\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, "
                             "\xD0\xBC\xD0\xB8\xD1\x80 \xD0\xB8 \xD0\xB2\xD1\x81\xD0\xB5")));
    EXPECT_FALSE(LooksLikeUtf16("A line of text.\r\nAnother one, which is longer.\r\n"));
    EXPECT_FALSE(LooksLikeUtf16("D\xE9j\xE0 vu, d\xE9j\xE0 entendu: une ligne un peu plus longue.\r\n"));
    EXPECT_FALSE(LooksLikeUtf16(""));
    EXPECT_FALSE(LooksLikeUtf16("x"));
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
