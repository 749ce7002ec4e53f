#include <limits>
#include <optional>
#include <utility>

#include "Utils/internal/TextEncoding.h"
#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
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
    ReadFileLimited(path, kNoLimit, text, detected, forced);
    return text;
}

bool FileSystemUtils::ReadFileLimited(const std::string& path, std::uint64_t mostBytes, std::string& text,
                                      FileEncoding& detected, FileEncoding forced) {
    text.clear();
    const std::uint64_t size = GetFileSizeInBytes(path);
    std::optional<std::string> content = platform::ReadFileWithin(path, mostBytes);
    if (!content) return false;
    detected = DetectEncoding(*content, size);

    const FileEncoding effective = forced == NOTSET ? detected : forced;
    if (!IsFileEncoding(effective)) {
        LogUnsupportedEncoding(effective, 2311);
        platform::SetLastErrorCode(base::kInvalidParameter);
        return false;
    }
    text = Decoded(*std::move(content), effective);
    if (effective != ANSI) StripBom(text);
    return true;
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
