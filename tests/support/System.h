#pragma once

#include <filesystem>

namespace quillon::test {

/// For tests of what only one of the systems has.
inline constexpr bool kWindows = std::filesystem::path::preferred_separator == '\\';

/// The sanitizers' run-time needs descriptors of its own.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace quillon::test
