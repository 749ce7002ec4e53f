#include "quillon/UserUtils.h"

namespace quillon {
namespace {

/// Both parts may be empty, and neither holds a separator of either kind.
std::tuple<bool, std::string, std::string> SplitAt(char separator, const std::string& text) {
    const char other = separator == '@' ? '\\' : '@';
    const std::size_t place = text.find(separator);
    if (place == std::string::npos || text.find(separator, place + 1) != std::string::npos ||
        text.find(other) != std::string::npos) {
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
