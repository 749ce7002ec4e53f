#include <optional>
#include <utility>

#include "Utils/TextEncoding.h"
#include "platform/FileApi.h"
#include "platform/Utf.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

namespace {

/// The mark decides the byte order; big-endian without one.
std::string DecodeUtf16(std::string_view bytes) {
    const bool littleEndian = bytes.starts_with("\xFF\xFE");
    const bool marked = littleEndian || bytes.starts_with("\xFE\xFF");
    return platform::Utf16BytesToUtf8(bytes.substr(marked ? 2 : 0), !littleEndian);
}

/// Of a leading mark, whichever it is; 0 without one.
std::size_t BomLength(std::string_view content) {
    auto ignored = FileSystemUtils::NOTSET;
    if (!FileSystemUtils::CheckBufferForBom(content.data(), content.size(), ignored)) return 0;
    return content.starts_with('\xEF') ? 3 : 2;
}

/// As UTF-8 without its mark; ANSI stays as it is. `encoding` is one of files.
std::string Decoded(std::string content, FileSystemUtils::FileEncoding encoding) {
    if (encoding == FileSystemUtils::ANSI) return content;
    if (encoding == FileSystemUtils::UTF16LENOBOM) {
        content = platform::Utf16BytesToUtf8(content, false);
    } else if (encoding == FileSystemUtils::UTF16LE || encoding == FileSystemUtils::UTF16BE) {
        content = DecodeUtf16(content);
    }
    content.erase(0, BomLength(content));
    return content;
}

}  // namespace

bool FileSystemUtils::HasBom(std::string_view text) { return BomLength(text) != 0; }
std::string_view FileSystemUtils::StripBom(std::string_view text) { return text.substr(BomLength(text)); }
void FileSystemUtils::StripBom(std::string& text) { text.erase(0, BomLength(text)); }

std::string FileSystemUtils::ReadFile(const std::string& path, FileEncoding& detected, FileEncoding forced) {
    const std::uint64_t size = GetFileSizeInBytes(path);
    std::optional<std::string> content = platform::ReadWholeFile(path);
    if (!content) return {};
    detected = DetectEncoding(*content, size);

    const FileEncoding effective = forced == NOTSET ? detected : forced;
    if (!IsFileEncoding(effective)) {
        LogUnsupportedEncoding(effective, 2311);
        return {};
    }
    return Decoded(*std::move(content), effective);
}

std::string FileSystemUtils::DecodeContent(std::string content, FileEncoding& detected) {
    detected = DetectEncoding(content, content.size());
    return Decoded(std::move(content), detected);
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
