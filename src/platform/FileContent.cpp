#include "platform/FileContent.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"

namespace quillon::platform {

namespace {

std::nullopt_t FailForMemory() {
    SetLastErrorCode(base::kNotEnoughMemory);
    return std::nullopt;
}

bool RefuseForSize() {
    SetLastErrorCode(base::kNotEnoughMemory);
    return false;
}

std::optional<std::string> ReadAll(BoundedReader& reader) try {
    std::string content;
    content.reserve(static_cast<std::size_t>(reader.Limit()));
    PrepareMemory(content.data(), content.capacity());
    const PieceBuffer buffer(reader.Limit());
    for (;;) {
        const auto piece = buffer.Fill(reader);
        if (!piece) return std::nullopt;
        if (piece->empty()) return content;
        content.append(*piece);
    }
} catch (const std::bad_alloc&) {
    return FailForMemory();
} catch (const std::length_error&) {
    return FailForMemory();
}

}  // namespace

BoundedReader::BoundedReader(const FileHandle& file, std::uint64_t most)
    : m_file(file), m_most(most), m_limit(SizeNow()) {}

std::uint64_t BoundedReader::SizeNow() const { return std::min(SizeOfOpenFile(m_file).value_or(0), m_most); }

std::optional<std::size_t> BoundedReader::Read(char* buffer, std::size_t size) {
    if (m_limit == 0 && m_done > 0) m_limit = SizeNow();  // it was empty, and grows
    const bool tellsSize = m_limit > 0;
    const std::uint64_t end = tellsSize ? m_limit : m_most;
    size = static_cast<std::size_t>(std::min<std::uint64_t>(size, end - std::min(end, m_done)));
    if (size == 0) return 0;
    const auto count = ReadSome(m_file, buffer, size);
    m_done += count.value_or(0);
    if (!tellsSize && m_done > kMostWithoutSize) return FailForMemory();
    return count;
}

PieceBuffer::PieceBuffer(std::uint64_t expected)
    : m_size(expected == 0 ? kPieceSize
                           : static_cast<std::size_t>(std::min<std::uint64_t>(expected, kPieceSize))),
      m_bytes(std::make_unique_for_overwrite<char[]>(m_size)) {}

std::optional<std::string_view> PieceBuffer::Fill(BoundedReader& reader) const {
    const auto count = reader.Read(m_bytes.get(), m_size);
    if (!count) return std::nullopt;
    return std::string_view(m_bytes.get(), *count);
}

bool CopyContent(const FileHandle& source, const FileHandle& target) {
    BoundedReader reader(source);
    const PieceBuffer buffer(reader.Limit());
    for (;;) {
        const auto piece = buffer.Fill(reader);
        if (!piece) return false;
        if (piece->empty()) return true;
        if (!WriteAll(target, *piece)) return false;
    }
}

bool ReadPieces(const std::string& path, const std::function<bool(std::string_view)>& visit) {
    const FileHandle file = OpenForReading(path);
    if (!file) return false;
    BoundedReader reader(file);
    const PieceBuffer buffer(reader.Limit());
    for (;;) {
        const auto piece = buffer.Fill(reader);
        if (!piece) return false;
        if (piece->empty() || !visit(*piece)) return true;
    }
}

std::optional<std::string> ReadWholeFile(const std::string& path, std::uint64_t most) {
    const FileHandle file = OpenForReading(path);
    if (!file) return std::nullopt;
    BoundedReader reader(file, most);
    return ReadAll(reader);
}

bool ReadPiecesWithin(const std::string& path, std::uint64_t most,
                      const std::function<void(std::string_view, std::uint64_t)>& visit) {
    const FileHandle file = OpenForReading(path);
    if (!file) return false;
    if (SizeOfOpenFile(file).value_or(0) > most) return RefuseForSize();
    BoundedReader reader(file, most == BoundedReader::kNoLimit ? most : most + 1);
    const PieceBuffer buffer(reader.Limit());
    for (std::uint64_t done = 0;;) {
        const auto piece = buffer.Fill(reader);
        if (!piece) return false;
        if (piece->empty()) return true;
        done += piece->size();
        if (done > most) return RefuseForSize();
        visit(*piece, reader.Limit());
    }
}

}  // namespace quillon::platform
