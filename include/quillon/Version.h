#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Holds a version of four parts (major, minor, patch, build), each an unsigned 32-bit number,
/// and whether it was well formed. It is a plain value that can be ordered, hashed and printed.
/// Nothing is logged or thrown.
///
/// @code
/// const Version installed("10.2");
/// if (!installed.Valid()) std::cout << "malformed" << '\n';
/// if (installed < Version(10, 2, 1, 0)) std::cout << installed << " is older" << '\n';  // 10.2.0.0
/// std::cout << installed.DeepCompare(Version("10.3")) << '\n';                          // -3: minor
/// @endcode
class QUILLON_API Version {
public:
    /// Makes a valid version; of each number the lower 32 bits count.
    Version(unsigned long major, unsigned long minor, unsigned long patch, unsigned long build);
    /// Reads one to four decimal numbers joined by dots; parts that are not given are 0, and
    /// text behind the last number is not looked at ("1.2beta" is 1.2.0.0 and valid). A dot
    /// without a number behind it, more than three dots, and a text without a number are not
    /// valid; the parts read so far are kept, with more than three dots none.
    Version(const std::string& text);

    /// Returns whether the text was well formed; a version made of numbers is.
    bool Valid() const;
    /// Returns the part as an `int`; numbers of 2^31 and more are negative.
    int Major() const;
    int Minor() const;
    int Patch() const;
    int Build() const;
    /// Replaces the build number; validity stays.
    void SetBuild(int build);
    /// Returns all four parts joined by dots, "10.2.0.0" for "10.2", whatever the validity.
    std::string to_string() const;

    /// Returns -1, 0 or 1 as this version is lower, equal or higher, part by part and unsigned;
    /// validity is not looked at.
    int Compare(const Version& other) const;
    /// Returns the same sign, and as its size the first part that differs: 4 major, 3 minor, 2
    /// patch, 1 build.
    int DeepCompare(const Version& other) const;

    /// Orders and equates versions by their four parts as Compare() does.
    std::strong_ordering operator<=>(const Version& other) const;
    bool operator==(const Version& other) const;

private:
    std::uint32_t m_parts[4] = {};
    bool m_valid = true;
};

/// Writes to_string().
QUILLON_API std::ostream& operator<<(std::ostream& stream, const Version& version);

}  // namespace quillon

/// Hashes the four parts, so that a Version can be the key of an unordered container; versions
/// that compare equal have equal hashes.
template <>
struct std::hash<quillon::Version> {
    /// Mixes the four parts.
    std::size_t operator()(const quillon::Version& version) const noexcept {
        const auto join = [](int high, int low) {
            return static_cast<std::uint64_t>(static_cast<std::uint32_t>(high)) << 32 |
                   static_cast<std::uint32_t>(low);
        };
        const std::uint64_t upper = join(version.Major(), version.Minor());
        return std::hash<std::uint64_t>()(upper * 0x9E3779B97F4A7C15U ^
                                          join(version.Patch(), version.Build()));
    }
};
