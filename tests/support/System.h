#pragma once

#include <filesystem>

namespace quillon::test {

/// For tests of what only one of the systems has.
inline constexpr bool kWindows = std::filesystem::path::preferred_separator == '\\';

}  // namespace quillon::test
