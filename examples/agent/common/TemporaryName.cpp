#include "common/TemporaryName.h"

#include <string_view>

#include "quillon/UniqueIdentifier.h"

namespace quillon::agent {

namespace {

constexpr std::string_view kPrefix = ".quillon-", kSuffix = ".part";

}  // namespace

std::string MakeTemporaryName() {
    return std::string(kPrefix) + UniqueIdentifier::Generate().ToString() + std::string(kSuffix);
}

bool IsTemporaryName(const std::string& name) {
    if (name.size() <= kPrefix.size() + kSuffix.size()) return false;
    if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) return false;
    const std::string_view number =
        std::string_view(name).substr(kPrefix.size(), name.size() - kPrefix.size() - kSuffix.size());
    return number.find_first_not_of("0123456789abcdef-") == std::string_view::npos;
}

}  // namespace quillon::agent
