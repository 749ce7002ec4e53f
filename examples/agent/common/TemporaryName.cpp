#include "common/TemporaryName.h"

#include <random>
#include <string_view>

namespace quillon::agent {

namespace {

constexpr std::string_view kPrefix = ".quillon-", kSuffix = ".part";

}  // namespace

std::string MakeTemporaryName() {
    std::random_device random;
    return std::string(kPrefix) + std::to_string(random()) + '-' + std::to_string(random()) +
           std::string(kSuffix);
}

bool IsTemporaryName(const std::string& name) {
    if (name.size() <= kPrefix.size() + kSuffix.size()) return false;
    if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) return false;
    const std::string_view number =
        std::string_view(name).substr(kPrefix.size(), name.size() - kPrefix.size() - kSuffix.size());
    return number.find_first_not_of("0123456789abcdef-") == std::string_view::npos;
}

}  // namespace quillon::agent
