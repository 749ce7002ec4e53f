#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>
#include <tuple>

#include "quillon/UserUtils.h"

// Short names are compared with the regular expressions that define the two forms.

namespace {

using quillon::UserUtils;
using Split = std::tuple<bool, std::string, std::string>;

constexpr std::size_t kLongestForRegex = 200;  // it recurses on its input

Split ByRegex(const std::regex& form, const std::string& text) {
    std::smatch parts;
    if (!std::regex_match(text, parts, form)) return {};
    return {true, parts[1].str(), parts[2].str()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::regex downLevel(R"(([^\\@]+)?\\([^\\@]+)?)");
    static const std::regex principal(R"(([^\\@]+)?@([^\\@]+)?)");
    const std::string text(reinterpret_cast<const char*>(data), size);
    const Split asDownLevel = UserUtils::SplitDownLevelLogonName(text);
    const Split asPrincipal = UserUtils::SplitUserPrincipalName(text);
    if (std::get<0>(asDownLevel) && std::get<0>(asPrincipal)) std::abort();
    if (size >= kLongestForRegex) return 0;
    if (asDownLevel != ByRegex(downLevel, text) || asPrincipal != ByRegex(principal, text)) std::abort();
    return 0;
}
