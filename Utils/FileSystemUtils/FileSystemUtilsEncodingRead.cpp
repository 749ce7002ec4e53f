#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

#include "Utils/internal/TextEncoding.h"
#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "base/Utf16Decoder.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

namespace {

constexpr auto kNoLimit = std::numeric_limits<std::uint64_t>::max();

/// The mark decides the byte order; big-endian without one.
std::string DecodeUtf16(std::string_view bytes) {
    const bool littleEndian = bytes.starts_with("\xFF\xFE");
    const bool marked = littleEndian || bytes.starts_with("\xFE\xFF");
    return base::Utf16BytesToUtf8(bytes.substr(marked ? 2 : 0), !littleEndian);
}

/// Converts the content of a file to UTF-8 and keeps its byte-order mark; ANSI stays as it is. `encoding`
/// is one that a file can have.
std::string Decoded(std::string content, FileSystemUtils::FileEncoding encoding) {
    switch (encoding) {
        case FileSystemUtils::UTF16LENOBOM:
            return base::Utf16BytesToUtf8(content, false);
        case FileSystemUtils::UTF16LE:
        case FileSystemUtils::UTF16BE:
            return DecodeUtf16(content);
        default:
            return content;
    }
}

/// Takes the pieces of a file and looks at them, or converts them, while they are in the processor's cache.
class TextReader {
public:
    using FileEncoding = FileSystemUtils::FileEncoding;

    /// `size` is what the system tells, which need not be the content's own.
    TextReader(std::uint64_t size, FileEncoding forced) : m_size(size), m_forced(forced) {}

    void Add(std::string_view piece, std::uint64_t expected) {
        if (m_isFirst) Begin(piece);
        if (m_decoder) {
            m_decoder->Add(piece, m_text);
        } else {
            if (m_isFirst) Reserve(expected);
            m_utf8.Add(piece);
            m_text.append(piece);
        }
        // The first piece tells how much the rest will need.
        if (m_isFirst && m_decoder) Reserve(m_text.size() * (expected / (piece.size() + 1) + 1));
        m_isFirst = false;
    }

    FileEncoding Detected() const { return m_decoder ? m_mark : DetectEncoding(m_text, m_size, m_utf8); }

    std::string TakeText(FileEncoding encoding) {
        return m_decoder ? std::move(m_text) : Decoded(std::move(m_text), encoding);
    }

private:
    /// What has a mark of UTF-16, and is not to be read otherwise, is converted as it comes.
    void Begin(std::string_view& piece) {
        const bool isFree = m_forced == FileSystemUtils::NOTSET || m_forced == FileSystemUtils::UTF16LE ||
                            m_forced == FileSystemUtils::UTF16BE;
        if (m_size < 2 || !isFree) return;
        FileSystemUtils::CheckBufferForBom(piece.data(), piece.size(), m_mark);
        if (m_mark != FileSystemUtils::UTF16LE && m_mark != FileSystemUtils::UTF16BE) return;
        m_decoder.emplace(m_mark == FileSystemUtils::UTF16BE);
        piece.remove_prefix(2);
    }

    void Reserve(std::uint64_t size) {
        m_text.reserve(static_cast<std::size_t>(size));
        platform::PrepareMemory(m_text.data(), m_text.capacity());
    }

    std::uint64_t m_size;
    FileEncoding m_forced;
    FileEncoding m_mark = FileSystemUtils::NOTSET;
    bool m_isFirst = true;
    std::optional<base::Utf16Decoder> m_decoder;
    Utf8Finder m_utf8;
    std::string m_text;  ///< the content, or the text where there is a decoder
};

bool RefuseForMemory() {
    platform::SetLastErrorCode(base::kNotEnoughMemory);
    return false;
}

}  // namespace

bool FileSystemUtils::HasBom(std::string_view text) {
    FileEncoding ignored = NOTSET;
    return CheckBufferForBom(text.data(), text.size(), ignored);
}

std::string_view FileSystemUtils::StripBom(std::string_view text) {
    if (!HasBom(text)) return text;
    return text.substr(text.starts_with('\xEF') ? 3 : 2);
}

void FileSystemUtils::StripBom(std::string& text) {
    text.erase(0, text.size() - StripBom(std::string_view(text)).size());
}

std::string FileSystemUtils::ReadFile(const std::string& path, FileEncoding& detected, FileEncoding forced) {
    std::string text;
    static_cast<void>(ReadFileLimited(path, kNoLimit, text, detected, forced));  // a failure gives no text
    return text;
}

bool FileSystemUtils::ReadFileLimited(const std::string& path, std::uint64_t mostBytes, std::string& text,
                                      FileEncoding& detected, FileEncoding forced) try {
    text.clear();
    const auto size = SizeForDetection(path);
    if (!size) return false;
    TextReader reader(*size, forced);
    const auto add = [&](std::string_view piece, std::uint64_t expected) { reader.Add(piece, expected); };
    if (!platform::ReadPiecesWithin(path, mostBytes, add)) return false;
    detected = reader.Detected();
    const FileEncoding effective = forced == NOTSET ? detected : forced;
    if (!IsFileEncoding(effective)) {
        LogUnsupportedEncoding(effective, 2311);
        platform::SetLastErrorCode(base::kInvalidParameter);
        return false;
    }
    text = reader.TakeText(effective);
    if (effective != ANSI) StripBom(text);
    platform::SetLastErrorCode(0);
    return true;
} catch (const std::bad_alloc&) {
    return RefuseForMemory();
} catch (const std::length_error&) {
    return RefuseForMemory();
}

std::string FileSystemUtils::DecodeContent(std::string content, FileEncoding& detected) {
    detected = DetectEncoding(content, content.size());
    std::string text = Decoded(std::move(content), detected);
    StripBom(text);  // what is detected as ANSI has none
    return text;
}

std::string FileSystemUtils::ReadANSIFile(const std::string& path, FileEncoding& detected) {
    return ReadFile(path, detected, ANSI);
}

std::string FileSystemUtils::ReadUtf8File(const std::string& path, FileEncoding& detected) {
    return ReadFile(path, detected, UTF8);
}

std::string FileSystemUtils::ReadUtf16LeFile(const std::string& path, FileEncoding& detected) {
    return ReadFile(path, detected, UTF16LE);
}

std::string FileSystemUtils::ReadUtf16BeFile(const std::string& path, FileEncoding& detected) {
    return ReadFile(path, detected, UTF16BE);
}

}  // namespace quillon
