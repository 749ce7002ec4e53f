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

/// What a version resource tells in numbers, each half of a version 32 bits.
struct FixedVersion {
    static constexpr std::uint32_t kSignature = 0xFEEF04BD;

    std::uint32_t signature = 0;
    std::uint32_t fileHigh = 0;
    std::uint32_t fileLow = 0;
    std::uint32_t productHigh = 0;
    std::uint32_t productLow = 0;

    bool operator==(const FixedVersion&) const = default;
};

/// The name of a table of texts: "040904b0" for "0409" and code page 1200.
std::string VersionTable(const std::string& language, std::uint16_t codePage);
std::string VersionTable(VersionTranslation translation);

/// The version resource of a file. A plain value. Outside Windows it is read from
/// PE files, and from the note that the build puts into our own ELF files.
class VersionResource {
public:
    /// `path` is a library path in UTF-8. Nothing when the file carries none, or one
    /// that cannot be read: then `isThere`, unless null, is true, see LastError().
    static std::optional<VersionResource> Load(const std::string& path, bool* isThere = nullptr);

    /// Nothing when it is missing or too short; the signature is not looked at.
    [[nodiscard]] std::optional<FixedVersion> Fixed() const;
    [[nodiscard]] std::vector<VersionTranslation> Translations() const;
    /// The text "FileVersion", "ProductName", ... of a table as it is stored: UTF-16, with
    /// the zeros that end it. Both names are found whatever their ASCII case.
    [[nodiscard]] std::optional<std::wstring> Value(const std::string& table, const char* name) const;
    /// The same of a language up to its first zero, in UTF-8.
    [[nodiscard]] std::optional<std::string> Text(VersionTranslation translation, const char* name) const;

private:
    struct Content;
    explicit VersionResource(std::shared_ptr<const Content> content) : m_content(std::move(content)) {}

    std::shared_ptr<const Content> m_content;
};

}  // namespace quillon::platform
