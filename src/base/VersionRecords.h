#pragma once

#include <cstdint>
#include <string>

namespace quillon::base {

/// A language of a version resource, as the file names it.
struct VersionTranslation {
    std::uint16_t language = 0;
    std::uint16_t codePage = 0;

    bool operator==(const VersionTranslation&) const = default;
};

/// Holds the numbers of a version resource; each half of a version has 32 bits.
struct FixedVersion {
    static constexpr std::uint32_t kSignature = 0xFEEF04BD;

    std::uint32_t signature = 0;
    std::uint32_t fileHigh = 0;
    std::uint32_t fileLow = 0;
    std::uint32_t productHigh = 0;
    std::uint32_t productLow = 0;

    bool operator==(const FixedVersion&) const = default;
};

/// Returns the name of a table of texts: "040904b0" for "0409" and code page 1200.
std::string VersionTable(const std::string& language, std::uint16_t codePage);
std::string VersionTable(VersionTranslation translation);

}  // namespace quillon::base
