#pragma once

#include <filesystem>

namespace quillon::test {

/// For tests of what only one of the systems has.
inline constexpr bool kWindows = std::filesystem::path::preferred_separator == '\\';

/// The sanitizers' run-time needs descriptors of its own, and ends the program when memory is refused.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/// For tests of what other standard libraries do in another way.
#ifdef __GLIBCXX__
inline constexpr bool kLibstdcxx = true;
#else
inline constexpr bool kLibstdcxx = false;
#endif

}  // namespace quillon::test
