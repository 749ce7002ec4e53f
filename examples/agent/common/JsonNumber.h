#pragma once

#include <optional>
#include <string>

namespace quillon::agent {

/// Returns a real number of JSON as its text has it. The JSON library reads numbers by the process's locale,
/// and has put that locale's decimal point, or the first byte of it, into the literal that it hands out.
std::string JsonNumber(std::string literal);

/// Returns the value of such a number, whatever the locale is; nothing past the range of a double.
std::optional<double> ValueOfJsonNumber(const std::string& number);

}  // namespace quillon::agent
