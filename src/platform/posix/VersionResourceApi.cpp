#include "platform/VersionResourceApi.h"

#include <unistd.h>

#include <limits>

#include "base/PeVersionResource.h"
#include "platform/ErrorText.h"
#include "platform/FileContent.h"
#include "platform/native/ElfVersionNote.h"

namespace quillon::platform {

namespace {

bool ReadFully(const FileHandle& file, std::uint64_t offset, char* buffer, std::size_t size) {
    if (offset > std::numeric_limits<off_t>::max()) return false;
    while (size > 0) {
        const ssize_t count = ::pread(file.Get(), buffer, size, static_cast<off_t>(offset));
        if (count <= 0) return false;
        buffer += count;
        offset += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

struct VersionResource::Content {
    base::VersionTexts texts;
};

std::optional<VersionResource> VersionResource::Load(const std::string& path, bool* isThere) {
    bool found = false;
    if (isThere != nullptr) *isThere = false;
    const FileHandle file = OpenForReading(path);
    if (!file) return std::nullopt;
    const base::ReadBytesAt read = [&file](std::uint64_t offset, void* buffer, std::size_t size) {
        return ReadFully(file, offset, static_cast<char*>(buffer), size);
    };
    auto texts = base::ReadPeVersion(read, found);
    if (!found) texts = ReadElfVersion(read);
    if (isThere != nullptr) *isThere = found || texts;
    if (!texts) {
        SetLastErrorCode(kNoResourceData);
        return std::nullopt;
    }
    return VersionResource(std::make_shared<const Content>(Content{std::move(*texts)}));
}

std::optional<base::FixedVersion> VersionResource::Fixed() const { return m_content->texts.fixed; }

std::vector<base::VersionTranslation> VersionResource::Translations() const {
    return m_content->texts.translations;
}

std::optional<std::wstring> VersionResource::Value(const std::string& table, const char* name) const {
    const std::wstring* const value = m_content->texts.Find(table, name);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

}  // namespace quillon::platform
