#pragma once

#include <string_view>

namespace quillon::base {

/// Returns what a decimal number stands for that std::from_chars() reads as out of range: 0 when it is too
/// close to it, else infinity, both with the number's sign.
double RealBeyondRange(std::string_view number);

}  // namespace quillon::base
