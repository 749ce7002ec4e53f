#include <algorithm>
#include <stdexcept>

#include "base/Utf.h"
#include "platform/TextApi.h"
#include "quillon/ICLogger.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr const char* kInvalidNarrow = "Invalid narrow string for conversion to wide";
constexpr const char* kInvalidWide = "Invalid wide string for conversion to narrow";

void LogInvalid(const char* message) {
    if (ICLogger* const logger = detail::RegisteredLogger()) logger->Error("%s", message);
}

}  // namespace

std::wstring StringUtils::NarrowStringToWide(const std::string& text) {
    if (auto wide = base::Utf8ToWide(text)) return std::move(*wide);
    LogInvalid(kInvalidNarrow);
    return {};
}

std::string StringUtils::WideStringToNarrow(const std::wstring& text) {
    if (auto narrow = base::WideToUtf8(text)) return std::move(*narrow);
    LogInvalid(kInvalidWide);
    return {};
}

std::string StringUtils::Utf16LeToUtf8(const std::wstring& text) {
    if (auto narrow = base::WideToUtf8(text)) return std::move(*narrow);
    throw std::range_error(kInvalidWide);
}

unsigned long long StringUtils::Utf8Count(const std::string& text) { return NarrowStringToWide(text).size(); }

bool StringUtils::StringToUtf16le(const std::string& text, std::uint16_t*& buffer, std::size_t& byteCount) {
    return StringToUtf16le(NarrowStringToWide(text), buffer, byteCount);
}

bool StringUtils::StringToUtf16le(const std::wstring& text, std::uint16_t*& buffer, std::size_t& byteCount) {
    buffer = new std::uint16_t[text.size()];
    std::transform(text.begin(), text.end(), buffer,
                   [](wchar_t unit) { return static_cast<std::uint16_t>(unit); });
    byteCount = 2 * text.size();
    return true;
}

std::string StringUtils::ConvertBSTRToNarrowString(BSTR text) {
    return platform::WideToAnsi(platform::BstrText(text));
}

}  // namespace quillon
