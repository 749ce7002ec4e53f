#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Handle.h"

namespace quillon::platform {

/// The bytes of open files: what FileApi.h's operations on content are made of. A
/// failure is false, nothing or an empty handle, see LastError().

/// One read or write moves at most this much: larger ones are not faster.
inline constexpr std::size_t kPieceSize = 128 * 1024;

/// Opens a file that has an end, which excludes pipes and devices; others may write to it meanwhile.
FileHandle OpenForReading(const std::string& path);
/// Bytes read, which may be fewer than fit; 0 at the end.
std::optional<std::size_t> ReadSome(const FileHandle& file, char* buffer, std::size_t size);
bool WriteAll(const FileHandle& file, std::string_view bytes);
/// Another handle of the same open file, which no child inherits.
FileHandle CopyOf(const FileHandle& file);

/// A file that tells no size may have no end in reach, as "/proc/self/pagemap" has none.
inline constexpr std::uint64_t kMostWithoutSize = std::uint64_t{64} << 20;

/// Reads what a file holds when it is opened, `most` bytes at most: one that grows faster
/// than it is read would never end. A file that tells no size is read to its end, which must
/// come within kMostWithoutSize bytes: base::kNotEnoughMemory.
class BoundedReader {
public:
    static constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

    /// `file` is open and outlives the reader.
    explicit BoundedReader(const FileHandle& file, std::uint64_t most = kNoLimit);

    [[nodiscard]] std::uint64_t Limit() const { return m_limit; }
    /// Reads as ReadSome() does.
    std::optional<std::size_t> Read(char* buffer, std::size_t size);

private:
    [[nodiscard]] std::uint64_t SizeNow() const;

    const FileHandle& m_file;
    std::uint64_t m_most;
    std::uint64_t m_limit;
    std::uint64_t m_done = 0;
};

/// Tells the system that memory of some size, which is not in use yet, is about to be filled.
void PrepareMemory(void* memory, std::size_t size);

/// Memory for one piece of a file at a time.
class PieceBuffer {
public:
    /// `expected` is how much is to be read in all; 0 when it is not known.
    explicit PieceBuffer(std::uint64_t expected);
    /// Returns the next piece, which is valid until the next call; empty at the end, nothing on failure.
    std::optional<std::string_view> Fill(BoundedReader& reader) const;

private:
    std::size_t m_size;
    std::unique_ptr<char[]> m_bytes;
};

/// Writes what a file holds when this begins, read from where it is, behind another one's content.
bool CopyContent(const FileHandle& source, const FileHandle& target);

}  // namespace quillon::platform
