#include "common/JsonNumber.h"

#include <string_view>
#include <system_error>

#include "quillon/detail/FromChars.h"

namespace quillon::agent {

std::string JsonNumber(std::string literal) {
    constexpr std::string_view kOthers = "+-0123456789Ee";
    for (char& character : literal) {
        if (kOthers.find(character) == std::string_view::npos) character = '.';
    }
    return literal;
}

std::optional<double> ValueOfJsonNumber(const std::string& number) {
    double value = 0;
    const auto error = detail::FromChars(number.data(), number.data() + number.size(), value).ec;
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

}  // namespace quillon::agent
