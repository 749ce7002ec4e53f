#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/VersionResourceApi.h"

namespace quillon::platform {

/// Reads exactly `size` bytes of a file from `offset`; false when it has not as many.
using ReadBytesAt = std::function<bool(std::uint64_t offset, void* buffer, std::size_t size)>;

struct VersionText {
    VersionTranslation translation;
    std::string name;  ///< UTF-8, as all text
    std::string text;
};

struct VersionTexts {
    std::vector<VersionTranslation> translations;
    std::vector<VersionText> texts;

    /// The first text of a language with the name, whatever its ASCII case.
    [[nodiscard]] const std::string* Find(VersionTranslation translation, const std::string& name) const;
};

/// The first version resource of a PE file, 32 or 64 bits. Reads headers, the resource
/// directories on the way to it and the resource itself, never more than some hundred
/// kilobytes, whatever the file says. Nothing when the file is no PE file, has no such
/// resource or contradicts itself.
std::optional<VersionTexts> ReadPeVersion(const ReadBytesAt& read);

}  // namespace quillon::platform
