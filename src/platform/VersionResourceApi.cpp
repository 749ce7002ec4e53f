#include "platform/VersionResourceApi.h"

#include "platform/HexDigits.h"
#include "platform/Utf.h"

namespace quillon::platform {

namespace {

std::string FourDigits(std::uint16_t number) {
    std::string digits;
    for (int shift = 12; shift >= 0; shift -= 4) digits.push_back(kLowerDigits[number >> shift & 0xF]);
    return digits;
}

}  // namespace

std::string VersionTable(const std::string& language, std::uint16_t codePage) {
    return language + FourDigits(codePage);
}

std::string VersionTable(VersionTranslation translation) {
    return VersionTable(FourDigits(translation.language), translation.codePage);
}

std::optional<std::string> VersionResource::Text(VersionTranslation translation, const char* name) const {
    const auto value = Value(VersionTable(translation), name);
    if (!value) return std::nullopt;
    return ToUtf8(std::wstring_view(*value).substr(0, value->find(L'\0')));
}

}  // namespace quillon::platform
