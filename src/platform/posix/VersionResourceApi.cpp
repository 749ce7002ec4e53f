#include "platform/VersionResourceApi.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <limits>

#include "base/PeVersionResource.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/KeptError.h"
#include "platform/native/ElfVersionNote.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

/// Reads a file at any offset, through one buffer: most of a version is a few bytes here and there of two
/// neighbourhoods, the headers and the resource directories.
class BufferedReader {
public:
    explicit BufferedReader(const FileHandle& file) : m_file(file) {}

    /// Reads exactly so many bytes; false when there are not as many.
    bool Read(std::uint64_t offset, void* buffer, std::size_t size);
    /// The errno of a read that has failed; 0 when none has.
    [[nodiscard]] int Error() const { return m_error; }

private:
    static constexpr std::size_t kBufferSize = 4096;

    /// Returns how many bytes were read: less than asked for at the end of the file or when reading fails.
    std::size_t ReadFile(std::uint64_t offset, char* buffer, std::size_t size);

    const FileHandle& m_file;
    std::array<char, kBufferSize> m_buffer;
    std::uint64_t m_offset = 0;
    std::size_t m_count = 0;
    int m_error = 0;
};

bool BufferedReader::Read(std::uint64_t offset, void* buffer, std::size_t size) {
    if (size > kBufferSize) return ReadFile(offset, static_cast<char*>(buffer), size) == size;
    const auto isBuffered = [&] {
        return offset >= m_offset && offset - m_offset <= m_count && m_count - (offset - m_offset) >= size;
    };
    if (!isBuffered()) {
        m_count = ReadFile(offset, m_buffer.data(), kBufferSize);
        m_offset = offset;
    }
    if (!isBuffered()) return false;
    std::memcpy(buffer, m_buffer.data() + (offset - m_offset), size);
    return true;
}

std::size_t BufferedReader::ReadFile(std::uint64_t offset, char* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size && offset + done <= std::numeric_limits<off_t>::max()) {
        const ssize_t count =
            ::pread(m_file.Get(), buffer + done, size - done, static_cast<off_t>(offset + done));
        if (count < 0) m_error = errno;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

/// A pipe or a device, which is never opened and has no version.
bool IsSpecialFile(const std::string& path) {
    const KeptError whyItIsNotOpen;
    const auto attributes = AttributesOf(path);
    return attributes && attributes->isSpecial;
}

}  // namespace

struct VersionResource::Content {
    base::VersionTexts texts;
};

std::optional<VersionResource> VersionResource::Load(const std::string& path, bool* isThere) {
    bool found = false;
    const FileHandle file = OpenForReading(path);
    if (isThere != nullptr) *isThere = !file && !IsSpecialFile(path);
    if (!file) return std::nullopt;
    BufferedReader reader(file);
    const base::ReadBytesAt read = [&reader](std::uint64_t offset, void* buffer, std::size_t size) {
        return reader.Read(offset, buffer, size);
    };
    auto texts = base::ReadPeVersion(read, found);
    if (!found) texts = ReadElfVersion(read);
    const int error = reader.Error();
    if (isThere != nullptr) *isThere = found || texts || error != 0;
    if (texts) return VersionResource(std::make_shared<const Content>(Content{std::move(*texts)}));
    SetLastErrorCode(error != 0 ? WindowsCode(error) : kNoResourceData);
    return std::nullopt;
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
