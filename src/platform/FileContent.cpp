#include "platform/FileContent.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <stdexcept>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"

namespace quillon::platform {

namespace {

std::optional<std::string> ReadAll(BoundedReader& reader) {
    std::string content(reader.Limit() > 0 ? static_cast<std::size_t>(reader.Limit()) : kPieceSize, '\0');
    std::size_t length = 0;
    for (;;) {
        if (length == content.size() && reader.Limit() != length)
            content.resize(length + kPieceSize + length);
        const auto count = reader.Read(content.data() + length, content.size() - length);
        if (!count) return std::nullopt;
        if (*count == 0) break;
        length += *count;
    }
    content.resize(length);
    return content;
}

std::optional<std::string> FailForMemory() {
    SetLastErrorCode(base::kNotEnoughMemory);
    return std::nullopt;
}

}  // namespace

BoundedReader::BoundedReader(const FileHandle& file, std::uint64_t most)
    : m_file(file), m_most(most), m_limit(SizeNow()) {}

std::uint64_t BoundedReader::SizeNow() const { return std::min(SizeOfOpenFile(m_file).value_or(0), m_most); }

std::optional<std::size_t> BoundedReader::Read(char* buffer, std::size_t size) {
    if (m_limit == 0 && m_done > 0) m_limit = SizeNow();  // it was empty, and grows
    const std::uint64_t left = m_limit - std::min(m_limit, m_done);
    if (m_limit > 0) size = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
    if (size == 0) return 0;
    const auto count = ReadSome(m_file, buffer, size);
    m_done += count.value_or(0);
    return count;
}

bool ReadPieces(const std::string& path, const std::function<bool(std::string_view)>& visit) {
    const FileHandle file = OpenForReading(path);
    if (!file) return false;
    BoundedReader reader(file);
    std::string buffer(kPieceSize, '\0');
    for (;;) {
        const auto count = reader.Read(buffer.data(), buffer.size());
        if (!count) return false;
        if (*count == 0 || !visit(std::string_view(buffer).substr(0, *count))) return true;
    }
}

std::optional<std::string> ReadWholeFile(const std::string& path, std::uint64_t most) {
    const FileHandle file = OpenForReading(path);
    if (!file) return std::nullopt;
    BoundedReader reader(file, most);
    try {
        return ReadAll(reader);
    } catch (const std::bad_alloc&) {
        return FailForMemory();
    } catch (const std::length_error&) {
        return FailForMemory();
    }
}

}  // namespace quillon::platform
