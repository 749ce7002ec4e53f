#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/VersionRecords.h"

namespace quillon::base {

/// Reads exactly `size` bytes of a file from `offset`; false when it has not as many.
using ReadBytesAt = std::function<bool(std::uint64_t offset, void* buffer, std::size_t size)>;

struct VersionTexts {
    std::optional<FixedVersion> fixed;
    std::vector<VersionTranslation> translations;
    /// Keeps the first value of each name in UTF-16, with the NULs that end it. The key is the table
    /// ("040904b0") and the name, both UTF-8 in lower case.
    std::map<std::pair<std::string, std::string>, std::wstring> values;

    void Add(const std::string& table, const std::string& name, std::wstring value);
    /// Returns the value, or null; the table and the name are case-insensitive in ASCII.
    [[nodiscard]] const std::wstring* Find(const std::string& table, const std::string& name) const;
};

/// Reads the first version resource of a PE file, 32 or 64 bits; of its languages the neutral one, else US
/// English, else the first. Reads headers, the resource
/// directories on the way to it and the resource itself, never more than some hundred
/// kilobytes, whatever the file says. Nothing when the file is no PE file or has no such
/// resource; `isThere` tells a resource that is listed but cannot be read from none. What of
/// the resource contradicts itself is left out.
std::optional<VersionTexts> ReadPeVersion(const ReadBytesAt& read, bool& isThere);

}  // namespace quillon::base
