#include <array>
#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

#include "ExpandedText.h"
#include "Utils/internal/NetworkPatterns.h"
#include "quillon/NetworkUtils.h"
#include "quillon/WindowsSockets.h"

// The linear matchers against the patterns that they stand for, on texts short enough
// for std::regex, and every address against its own text. Bytes below 0x20 are
// replaced by parts of addresses, so that matches and near misses are found soon.

namespace {

using quillon::NetworkUtils;

constexpr const char* kParts[] = {"10.0.0.1", "255.", "-", "1.2.3.4-5.6.7.8", "[", "]",
                                  "::",       "fe80", "0", "host.example",    ",", "%1"};

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckPatterns(const std::string& text) {
    static const std::regex name("^[-0-9a-z.]+[a-z][-0-9a-z.]+$");
    static const std::regex address(
        R"(^\[?((([0-9]{1,3}\.){3}([0-9]{1,3}))|([0-9a-fA-F:]*?:[0-9a-fA-F:]+))\]?$)");
    static const std::regex range(R"((?:[0-9]{1,3}\.){3}[0-9]{1,3}\b[-]\b(?:[0-9]{1,3}\.){3}[0-9]{1,3})");
    std::smatch match;
    Check(NetworkUtils::FqdnOrBlank(text) == (std::regex_match(text, name) ? text : ""));
    Check(NetworkUtils::IpAddressOrBlank(text) ==
          (std::regex_match(text, match, address) ? match[1].str() : ""));
    Check(quillon::ReadIpv4Range(text).has_value() == std::regex_match(text, range));
}

/// A range's ends are read as the addresses that they are.
void CheckEnds(const std::string& text) {
    const auto range = quillon::ReadIpv4Range(text);
    if (!range) return;
    const std::size_t dash = text.find('-');
    std::array<unsigned char, 16> low{}, high{};
    const bool areAddresses =
        NetworkUtils::XpFriendlyIpStringToAddress(2, text.substr(0, dash).c_str(), low.data()) &&
        NetworkUtils::XpFriendlyIpStringToAddress(2, text.substr(dash + 1).c_str(), high.data());
    Check(areAddresses == (range->low <= range->high));
    if (areAddresses) Check(NetworkUtils::IpInRange(text.substr(0, dash), text));
}

void CheckText(int family, const std::string& text) {
    std::array<unsigned char, 28> address{}, again{};
    if (!NetworkUtils::XpFriendlyIpStringToAddress(family, text.c_str(), address.data())) return;
    const std::string own = NetworkUtils::XpFriendlyAddressToIpString(family, address.data(), 28);
    Check(NetworkUtils::XpFriendlyIpStringToAddress(family, own.c_str(), again.data()));
    Check(address == again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLongestForRegex = 300;  // it recurses on its input
    static const bool isStarted = [] {             // what reads and writes socket addresses fails before
        quillon::WindowsSockets::GetInstance()->InitializeSockets();
        return true;
    }();
    Check(isStarted);
    const std::string text = quillon::ExpandedText(data, size, kParts);
    CheckText(2, text);
    CheckText(23, text);
    CheckEnds(text);
    NetworkUtils::IpInRange("10.0.0.5", text);
    NetworkUtils::IpInCidr("fe80::1", text);
    const std::size_t slash = text.find('/');
    if (slash != std::string::npos)
        NetworkUtils::GetNetworkCidrAddressFromAddressAndMask(text.substr(0, slash), text.substr(slash + 1));
    if (text.size() <= kLongestForRegex) CheckPatterns(text);
    return 0;
}
