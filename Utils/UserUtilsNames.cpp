#include <string_view>

#include "quillon/UserUtils.h"

namespace quillon {
namespace {

constexpr std::string_view kSeparators = "\\@";

/// Both parts may be empty, and neither holds a separator of either kind.
std::tuple<bool, std::string, std::string> SplitAt(char separator, const std::string& text) {
    const std::size_t place = text.find_first_of(kSeparators);
    if (place == std::string::npos || text[place] != separator ||
        text.find_first_of(kSeparators, place + 1) != std::string::npos) {
        return {};
    }
    return {true, text.substr(0, place), text.substr(place + 1)};
}

}  // namespace

std::tuple<bool, std::string, std::string> UserUtils::SplitDownLevelLogonName(const std::string& text) {
    return SplitAt('\\', text);
}

std::tuple<bool, std::string, std::string> UserUtils::SplitUserPrincipalName(const std::string& text) {
    return SplitAt('@', text);
}

}  // namespace quillon
