#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillon::platform {

/// A language of a version resource, as the file names it.
struct VersionTranslation {
    std::uint16_t language = 0;
    std::uint16_t codePage = 0;

    bool operator==(const VersionTranslation&) const = default;
};

/// The version texts that a file carries. A plain value. Outside Windows they are
/// read from PE files, and from the note that the build puts into our own ELF files.
class VersionResource {
public:
    /// `path` is a library path in UTF-8. Nothing when the file carries none.
    static std::optional<VersionResource> Load(const std::string& path);

    [[nodiscard]] std::vector<VersionTranslation> Translations() const;
    /// The text "FileVersion", "ProductName", ... of a language, in UTF-8.
    [[nodiscard]] std::optional<std::string> Text(VersionTranslation translation, const char* name) const;

private:
    struct Content;
    explicit VersionResource(std::shared_ptr<const Content> content) : m_content(std::move(content)) {}

    std::shared_ptr<const Content> m_content;
};

}  // namespace quillon::platform
