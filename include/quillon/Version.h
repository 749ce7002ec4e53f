#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// A version of four parts and whether it was well formed. A plain value.
class QUILLON_API Version {
public:
    Version(unsigned long major, unsigned long minor, unsigned long patch, unsigned long build);
    /// Up to four decimal numbers joined by dots; parts that are not given are 0, text
    /// after the last number is not looked at. A dot without a number, or more than
    /// three dots, is not valid.
    explicit Version(const std::string& text);

    bool Valid() const;
    int Major() const;
    int Minor() const;
    int Patch() const;
    int Build() const;
    void SetBuild(int build);
    /// All four parts, whatever the validity.
    std::string to_string() const;

    /// -1, 0 or 1; validity is not looked at.
    int Compare(const Version& other) const;
    /// As Compare, but tells the first part that differs: 4 major, 3 minor, 2 patch, 1 build.
    int DeepCompare(const Version& other) const;

    /// Order and equality of the four parts, as Compare.
    std::strong_ordering operator<=>(const Version& other) const;
    bool operator==(const Version& other) const;

private:
    std::uint32_t m_parts[4] = {};
    bool m_valid = true;
};

QUILLON_API std::ostream& operator<<(std::ostream& stream, const Version& version);

}  // namespace quillon

template <>
struct std::hash<quillon::Version> {
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
