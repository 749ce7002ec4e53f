#include <optional>
#include <stdexcept>
#include <utility>

#include "Utils/internal/TextEncoding.h"
#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/NewFile.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

using FileEncoding = FileSystemUtils::FileEncoding;

namespace {

bool IsUtf16(FileEncoding encoding) {
    return encoding >= FileSystemUtils::UTF16LE && encoding <= FileSystemUtils::UTF16BE;
}

std::string_view MarkOf(FileEncoding encoding) {
    if (encoding == FileSystemUtils::UTF8) return "\xEF\xBB\xBF";
    if (encoding == FileSystemUtils::UTF16BE) return "\xFE\xFF";
    return IsUtf16(encoding) ? "\xFF\xFE" : "";
}

}  // namespace

void FileSystemUtils::FlipEndianness(std::string& units) {
    for (std::size_t at = 0; at + 2 <= units.size(); at += 2) std::swap(units[at], units[at + 1]);
}

std::string FileSystemUtils::EncodeUtf16(std::string_view text, FileEncoding encoding) {
    std::optional<std::string> units = base::Utf8ToUtf16Bytes(text, false);
    if (!units) throw std::range_error("text for a UTF-16 file is not valid UTF-8");
    if (encoding == UTF16BE) FlipEndianness(*units);
    return *std::move(units);
}

bool FileSystemUtils::WriteFile(const std::string& path, const std::string& text, FileEncoding encoding) {
    if (!IsFileEncoding(encoding)) {
        LogUnsupportedEncoding(encoding, 2406);
        return false;
    }
    const std::string_view body = StripBom(std::string_view(text));
    const std::string_view mark = MarkOf(encoding);
    if (!IsUtf16(encoding)) return platform::WriteWholeFile(path, mark, body, platform::WriteMode::Truncate);
    return platform::WriteWholeFile(path, mark, EncodeUtf16(body, encoding), platform::WriteMode::Truncate);
}

bool FileSystemUtils::WriteFileAtomic(const std::string& path, std::string_view content) {
    using platform::NewFile;
    auto file = NewFile::Create(path, NewFile::IfThere::Replace, NewFile::Access::AsTheProcessLets);
    return file && platform::WriteAll(file->Handle(), content) && file->TakeSecurity() && file->Commit();
}

bool FileSystemUtils::WriteUtf8File(const std::string& path, const std::string& text) {
    return WriteFile(path, text, UTF8);
}

bool FileSystemUtils::WriteUtf8NoBomFile(const std::string& path, const std::string& text) {
    return WriteFile(path, text, UTF8NOBOM);
}

bool FileSystemUtils::WriteUtf16LeFile(const std::string& path, const std::string& text) {
    return WriteFile(path, text, UTF16LE);
}

bool FileSystemUtils::WriteUtf16BeFile(const std::string& path, const std::string& text) {
    return WriteFile(path, text, UTF16BE);
}

bool FileSystemUtils::AppendToFile(const std::string& path, const std::string& text, FileEncoding& current,
                                   FileEncoding requested) {
    if (requested != NOTSET) {
        current = requested;
    } else if (current == NOTSET) {
        std::string toDetect = path;
        const FileEncoding detected = GetFileEncoding(toDetect);
        if (detected == NOTSET) return false;
        current = detected;
    }
    const bool known = IsFileEncoding(current);
    std::string_view body = known ? StripBom(std::string_view(text)) : std::string_view();
    std::string utf16;
    if (IsUtf16(current)) {
        utf16 = EncodeUtf16(body, current);
        body = utf16;
    }
    // Unlike when writing, an unknown encoding is told after the opening, which makes the file.
    if (!platform::WriteWholeFile(path, {}, body, platform::WriteMode::Append)) return false;
    if (!known) LogUnsupportedEncoding(current, 2535);
    return known;
}

}  // namespace quillon
