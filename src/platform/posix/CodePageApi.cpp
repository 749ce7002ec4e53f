#include "platform/CodePageApi.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "base/Utf.h"
#include "platform/posix/Errno.h"
#include "quillon/DestructorFunctor.h"

namespace quillon::platform {

namespace {

/// The name of a page whose number on Windows is not that of a "CP...".
struct Charset {
    std::uint32_t page;
    const char* name;
};

constexpr Charset kCharsets[] = {
    {10000, "MACINTOSH"}, {20127, "ASCII"},  {20866, "KOI8-R"}, {20932, "EUC-JP"},  {21866, "KOI8-U"},
    {51932, "EUC-JP"},    {51936, "EUC-CN"}, {51949, "EUC-KR"}, {54936, "GB18030"},
};

std::string CharsetOf(std::uint32_t page) {
    constexpr std::uint32_t kBeforeIso8859 = 28590, kLastPart = 16;
    if (page > kBeforeIso8859 && page <= kBeforeIso8859 + kLastPart)
        return "ISO-8859-" + std::to_string(page - kBeforeIso8859);
    const auto* const found = std::ranges::find(kCharsets, page, &Charset::page);
    if (found != std::end(kCharsets)) return found->name;
    constexpr std::size_t kFewestDigits = 3;
    std::string digits = std::to_string(page);
    digits.insert(0, kFewestDigits - std::min(kFewestDigits, digits.size()), '0');
    return "CP" + digits;
}

/// Adds the character that a converter holds back because a mark may follow it.
void Flush(iconv_t converter, std::string& text) {
    char piece[64];
    char* out = piece;
    std::size_t room = sizeof piece;
    ::iconv(converter, nullptr, nullptr, &out, &room);
    text.append(piece, out);
}

}  // namespace

std::optional<std::string> CodePageToUtf8(std::string_view bytes, std::uint32_t page) {
    constexpr std::uint32_t kUtf8 = 65001;
    if (page == kOemCodePage || page == kUtf8) return base::RepairUtf8(bytes);
    const iconv_t converter = ::iconv_open("UTF-8", CharsetOf(page).c_str());
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        FailWithErrno();
        return std::nullopt;
    }
    const DestructorFunctor close([converter] { ::iconv_close(converter); });
    std::string text;
    char piece[4096];
    char* in = const_cast<char*>(bytes.data());
    for (std::size_t left = bytes.size(); left > 0;) {
        char* out = piece;
        std::size_t room = sizeof piece;
        const bool failed = ::iconv(converter, &in, &left, &out, &room) == static_cast<std::size_t>(-1);
        text.append(piece, out);
        if (!failed || errno == E2BIG) continue;
        Flush(converter, text);
        text += "\xEF\xBF\xBD";
        ++in;
        --left;
    }
    Flush(converter, text);
    return text;
}

}  // namespace quillon::platform
