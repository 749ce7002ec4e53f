#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

#include "Require.h"
#include "quillon/Url.h"

// The pattern in its own words is the oracle; std::regex recurses, so for short texts only.

namespace {

using quillon::Url;

std::string WithoutBlanks(const std::string& text) {
    return std::regex_replace(text.empty() ? "/" : text, std::regex(" "), "%20");
}

void CheckAgainstPattern(const std::string& text, const Url& url) {
    static const std::regex pattern(R"(^(\w+)://([^/]+)(.*)$)");
    std::smatch match;
    bool isUrl = std::regex_match(text, match, pattern);
    const std::string authority = isUrl ? match[2].str() : "";
    const std::size_t colon = authority.find(':');
    isUrl = isUrl && colon != authority.size() - 1;
    Require(isUrl == !url.Scheme().empty());
    if (!isUrl) {
        Require(!url.IsValid() && url.Port() == 0 && (text.empty() || url.ToString() == text));
        return;
    }
    Require(url.Scheme() == match[1]);
    Require(url.Host() == authority.substr(0, colon));
    Require(url.Path() == WithoutBlanks(match[3]));
    if (colon == std::string::npos) return;
    const long long port = std::strtoll(authority.c_str() + colon + 1, nullptr, 10);
    if (port == static_cast<int>(port)) Require(url.Port() == static_cast<unsigned int>(port));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const Url url = Url::Parse(text);
    if (size < 200) CheckAgainstPattern(text, url);
    // A printed URL must be read as the same one, except for a port past the range of int.
    if (url.IsValid() && url.Port() <= 0x7FFFFFFF)
        Require(Url::Parse(url.ToString()).ToString() == url.ToString());
    return 0;
}
