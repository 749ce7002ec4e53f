#include "Utils/internal/NetworkPatterns.h"
#include "platform/NetworkApi.h"
#include "quillon/NetworkUtils.h"

namespace quillon {

bool NetworkUtils::XpFriendlyIpStringToAddress(int family, const char* text, void* address) {
    if (text == nullptr || address == nullptr) return false;
    return platform::TextToAddress(family, text, address);
}

std::string NetworkUtils::XpFriendlyAddressToIpString(int, void* address, unsigned long length) {
    if (address == nullptr) return {};
    return platform::AddressToText(address, length == 0 ? platform::kIpv4AddressSize : length);
}

std::string NetworkUtils::FqdnOrBlank(const std::string& text) {
    return IsLowerCaseName(text) ? text : std::string();
}

std::string NetworkUtils::IpAddressOrBlank(const std::string& text) {
    return std::string(AddressInBrackets(text).value_or(std::string_view()));
}

}  // namespace quillon
