#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/VersionRecords.h"

namespace quillon::platform {

/// The code of a file that carries no such resource.
inline constexpr std::uint32_t kNoResourceData = 1812;

/// The version resource of a file. A plain value. Outside Windows it is read from
/// PE files, and from the note that the build puts into our own ELF files.
class VersionResource {
public:
    /// `path` is a library path in UTF-8. Nothing when the file carries none, or one
    /// that cannot be read: then `isThere`, unless null, is true, and outside Windows
    /// also when the file itself cannot be read. See LastError().
    static std::optional<VersionResource> Load(const std::string& path, bool* isThere = nullptr);

    /// Returns the numbers; nothing when they are missing or too short. The signature is not checked.
    [[nodiscard]] std::optional<base::FixedVersion> Fixed() const;
    [[nodiscard]] std::vector<base::VersionTranslation> Translations() const;
    /// The text "FileVersion", "ProductName", ... of a table as it is stored: UTF-16, with
    /// the zeros that end it. Both names are found whatever their ASCII case.
    [[nodiscard]] std::optional<std::wstring> Value(const std::string& table, const char* name) const;
    /// The same of a language up to its first zero, in UTF-8.
    [[nodiscard]] std::optional<std::string> Text(base::VersionTranslation translation,
                                                  const char* name) const;

private:
    struct Content;
    explicit VersionResource(std::shared_ptr<const Content> content) : m_content(std::move(content)) {}

    std::shared_ptr<const Content> m_content;
};

}  // namespace quillon::platform
