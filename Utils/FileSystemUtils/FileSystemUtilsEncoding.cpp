#include <algorithm>
#include <bit>
#include <cstring>
#include <istream>
#include <iterator>
#include <optional>

#include "Utils/internal/TextEncoding.h"
#include "base/AsciiRun.h"
#include "base/ByteBlocks.h"
#include "base/ErrorCodes.h"
#include "base/Utf8Cut.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/TextApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

using FileEncoding = FileSystemUtils::FileEncoding;

namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);

std::uint64_t WordAt(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, kWord);
    return word;
}

/// Returns the offset of the first byte of 0x80 or more at or after `from`, which may lie past the end.
std::size_t SkipAscii(std::string_view text, std::size_t from) {
    if (from >= text.size()) return text.size();
    return from + base::CountAscii(text.data() + from, text.size() - from);
}

/// How many continuation bytes a lead byte asks for; 0 when it is none.
std::size_t ContinuationsAfter(unsigned char lead) {
    if ((lead & 0xE0) == 0xC0) return 1;
    if ((lead & 0xF0) == 0xE0) return 2;
    return (lead & 0xF8) == 0xF0 ? 3 : 0;
}

bool AreContinuations(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), base::IsUtf8Continuation);
}

/// Returns the offset just past the first lead byte with its continuation bytes; npos when there is none.
/// A lead byte takes the bytes that it asks for with it, whether they fit or not; no scan starts inside
/// them.
std::size_t EndOfFirstUtf8Sequence(std::string_view text) {
    for (std::size_t at = SkipAscii(text, 0); at < text.size(); at = SkipAscii(text, at)) {
        const std::size_t count = ContinuationsAfter(static_cast<unsigned char>(text[at]));
        const std::string_view following = text.substr(at + 1, count);
        at += 1 + count;
        if (count != 0 && following.size() == count && AreContinuations(following)) return at;
    }
    return std::string_view::npos;
}

/// Returns the last offset from `at`, where no sequence is open, to `end` that no sequence which begins
/// before it can reach: no lead byte is among the three before it.
std::size_t LastFreeOffset(std::string_view piece, std::size_t at, std::size_t end) {
    constexpr int kLongestRest = 3;
    std::size_t free = end;
    int others = 0;
    for (std::size_t i = end; i > at && others < kLongestRest; --i) {
        const bool isLead = ContinuationsAfter(static_cast<unsigned char>(piece[i - 1])) != 0;
        others = isLead ? 0 : others + 1;
        if (isLead) free = i - 1;
    }
    return free;
}

std::uint16_t Utf16LeUnitAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) |
                                      static_cast<unsigned char>(bytes[at + 1]) << 8);
}

/// Returns the offset of the first surrogate at or after the even offset `from`, else the even size.
std::size_t SkipNonSurrogates(std::string_view bytes, std::size_t from) {
    static_assert(std::endian::native == std::endian::little, "words hold little-endian units");
    constexpr std::uint64_t kOnes = 0x0001000100010001;
    for (; from + kWord <= bytes.size(); from += kWord) {
        // A surrogate's lane becomes zero; the rest finds a zero lane.
        const std::uint64_t lanes = (WordAt(bytes.data() + from) & (kOnes * 0xF800)) ^ (kOnes * 0xD800);
        if (((lanes - kOnes) & ~lanes & (kOnes * 0x8000)) != 0) break;
    }
    while (from + 2 <= bytes.size() && (Utf16LeUnitAt(bytes, from) & 0xF800) != 0xD800) from += 2;
    return from;
}

/// The part before the first lone surrogate, without an odd last byte.
std::string_view ValidUtf16LePrefix(std::string_view bytes) {
    std::size_t at = SkipNonSurrogates(bytes, 0);
    while (at + 4 <= bytes.size() && (Utf16LeUnitAt(bytes, at) & 0xFC00) == 0xD800 &&
           (Utf16LeUnitAt(bytes, at + 2) & 0xFC00) == 0xDC00) {
        at = SkipNonSurrogates(bytes, at + 4);
    }
    return bytes.substr(0, at);
}

/// The system's test sees the units before the first invalid one, at most
/// `sampleSize` bytes of them. It runs on the bytes: they are those units.
bool IsUtf16WithoutBom(std::string_view content, std::uint64_t sampleSize) {
    // With one unit more than the test looks at, so that a pair is not cut at the end of those.
    sampleSize = std::min<std::uint64_t>(sampleSize, platform::Utf16SampleSize() + 2);
    const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(sampleSize, content.size()));
    return platform::LooksLikeUtf16(ValidUtf16LePrefix(content.substr(0, length)));
}

/// Everything from the stream's start; nothing when it cannot go there.
std::optional<std::string> ContentOf(std::istream& stream) {
    stream.seekg(0);
    if (!stream) return std::nullopt;
    std::string content;
    char block[16384];
    do {
        stream.read(block, sizeof block);
        content.append(block, static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    return content;
}

/// How much of the start tells a mark.
std::size_t MarkSampleSize(std::uint64_t size) { return size < 2 ? 0 : size < 3 ? 2 : 3; }

}  // namespace

const char* FileSystemUtils::FileEncodingToString(FileEncoding encoding) {
    static constexpr const char* kNames[] = {"NOTSET",  "ANSI",         "UTF8",   "UTF8NOBOM",
                                             "UTF16LE", "UTF16LENOBOM", "UTF16BE"};
    const auto index = static_cast<std::uint32_t>(encoding);
    return index < std::size(kNames) ? kNames[index] : "*** out of range ***";
}

bool FileSystemUtils::CheckBufferForBom(const char* buffer, std::size_t length, FileEncoding& encoding) {
    const std::string_view text(buffer, length);
    if (text.starts_with("\xFE\xFF")) {
        encoding = UTF16BE;
    } else if (text.starts_with("\xFF\xFE")) {
        encoding = UTF16LE;
    } else if (text.starts_with("\xEF\xBB\xBF")) {
        encoding = UTF8;
    } else {
        return false;
    }
    return true;
}

bool FileSystemUtils::CheckForUTF8Sequences(std::istream& stream, FileEncoding& encoding) {
    const std::optional<std::string> content = ContentOf(stream);
    if (!content) return false;
    const std::size_t end = EndOfFirstUtf8Sequence(*content);
    if (end == std::string_view::npos) return false;
    // The caller goes on from the sequence.
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(end));
    encoding = UTF8NOBOM;
    return true;
}

void FileSystemUtils::CheckForUTF16WithoutBom(std::istream& stream, FileEncoding& encoding,
                                              std::uint64_t sampleSize) {
    stream.clear();
    const std::optional<std::string> content = ContentOf(stream);
    if (content && IsUtf16WithoutBom(*content, sampleSize)) encoding = UTF16LENOBOM;
}

FileEncoding FileSystemUtils::GetFileEncoding(std::istream& stream, std::uint64_t size) {
    FileEncoding encoding = ANSI;
    const std::size_t wanted = MarkSampleSize(size);
    if (wanted != 0) {
        char start[3] = {};
        stream.read(start, static_cast<std::streamsize>(wanted));
        if (CheckBufferForBom(start, static_cast<std::size_t>(stream.gcount()), encoding)) return encoding;
        if (CheckForUTF8Sequences(stream, encoding)) return encoding;
    }
    CheckForUTF16WithoutBom(stream, encoding, size);
    return encoding;
}

FileEncoding FileSystemUtils::GetFileEncoding(std::string& path) {
    const std::optional<std::string> content = platform::ReadWholeFile(path);
    const auto size = content ? SizeForDetection(path) : std::nullopt;
    return size ? DetectEncoding(*content, *size) : NOTSET;
}

std::optional<std::uint64_t> SizeForDetection(const std::string& path) {
    const std::uint64_t size = FileSystemUtils::GetFileSizeInBytes(path);
    const std::uint32_t code = platform::LastError();
    if (size == 0 && code != 0 && code != base::kSharingViolation) return std::nullopt;
    return size;
}

void Utf8Finder::Add(std::string_view piece) {
    std::size_t at = 0;
    std::size_t checked = 0;  // a sequence before this offset has been looked for
    while (!m_hasFound && at < piece.size()) {
        if (m_expected == 0) {
            if (at >= checked) {
                // Most texts in a code page have hardly a place where a sequence could begin.
                const std::size_t lead = base::FindLeadOfUtf8(piece.data(), at, piece.size());
                at = LastFreeOffset(piece, at, std::min(lead, piece.size()));
                checked = lead + 1;
            }
            at = SkipAscii(piece, at);
            if (at == piece.size()) return;
            m_expected = ContinuationsAfter(static_cast<unsigned char>(piece[at++]));
            m_fits = true;
            continue;
        }
        const std::string_view following = piece.substr(at, m_expected);
        m_fits = m_fits && AreContinuations(following);
        m_expected -= following.size();
        at += following.size();
        m_hasFound = m_expected == 0 && m_fits;
    }
}

FileEncoding DetectEncoding(std::string_view content, std::uint64_t size) {
    Utf8Finder utf8;
    utf8.Add(content);
    return DetectEncoding(content, size, utf8);
}

FileEncoding DetectEncoding(std::string_view content, std::uint64_t size, const Utf8Finder& utf8) {
    FileEncoding encoding = FileSystemUtils::ANSI;
    const std::size_t wanted = MarkSampleSize(size);
    const std::string_view start = content.substr(0, wanted);
    if (FileSystemUtils::CheckBufferForBom(start.data(), start.size(), encoding)) return encoding;
    // A content shorter than the size that was told ends a stream's reading here.
    const bool complete = wanted != 0 && start.size() == wanted;
    if (complete && utf8.HasFound()) return FileSystemUtils::UTF8NOBOM;
    return IsUtf16WithoutBom(content, size) ? FileSystemUtils::UTF16LENOBOM : FileSystemUtils::ANSI;
}

bool IsFileEncoding(FileEncoding encoding) {
    return encoding >= FileSystemUtils::ANSI && encoding <= FileSystemUtils::UTF16BE;
}

void LogUnsupportedEncoding(FileEncoding encoding, int number) {
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        logger->Error("File encoding format %s not supported (%i)",
                      FileSystemUtils::FileEncodingToString(encoding), number);
    }
    platform::SetLastErrorCode(base::kInvalidParameter);
}

}  // namespace quillon
