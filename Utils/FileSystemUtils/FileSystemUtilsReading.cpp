#include <algorithm>
#include <functional>
#include <new>
#include <stdexcept>
#include <string_view>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestFirstLine = platform::kMostWithoutSize;

/// The bytes of a file, given in pieces, as text: CR LF becomes LF, 0x1A ends it.
class TextMode {
public:
    /// Appends to the text; false once it has ended.
    bool Add(std::string_view piece) {
        const std::size_t end = piece.find(kEndOfText);
        const bool goesOn = end == std::string_view::npos;
        AddLines(piece.substr(0, end));
        if (!goesOn) Finish();
        return goesOn;
    }
    void Finish() {
        if (m_hasReturn) m_text.push_back('\r');
        m_hasReturn = false;
    }

    std::string& Text() { return m_text; }

private:
    static constexpr char kEndOfText = '\x1A';

    void AddLines(std::string_view piece) {
        if (piece.empty()) return;
        if (piece.front() != '\n') Finish();
        m_hasReturn = false;
        if (piece.back() == '\r') {  // the next piece may begin with its line feed
            m_hasReturn = true;
            piece.remove_suffix(1);
        }
        for (std::size_t next; (next = piece.find("\r\n")) != std::string_view::npos;) {
            m_text.append(piece.substr(0, next));
            piece.remove_prefix(next + 1);
        }
        m_text.append(piece);
    }

    std::string m_text;
    bool m_hasReturn = false;
};

bool FailForMemory() {
    platform::SetLastErrorCode(base::kNotEnoughMemory);
    return false;
}

/// As platform::ReadPieces(), and false also when the visitor has no memory.
bool ReadPieces(const std::string& path, const std::function<bool(std::string_view)>& visit) try {
    return platform::ReadPieces(path, visit);
} catch (const std::bad_alloc&) {
    return FailForMemory();
} catch (const std::length_error&) {
    return FailForMemory();
}

bool IsShortEnough(std::size_t firstLine) { return firstLine <= kLongestFirstLine || FailForMemory(); }

}  // namespace

std::string FileSystemUtils::ReadContentsOfFile(const std::string& path) {
    TextMode reader;
    if (!ReadPieces(path, [&](std::string_view piece) { return reader.Add(piece); })) return {};
    reader.Finish();
    platform::SetLastErrorCode(0);
    return std::move(reader.Text());
}

void FileSystemUtils::ReadContentsOfFile(const std::string& path, std::vector<std::string>& lines) {
    constexpr std::size_t kLongestLine = 32'767;
    const std::string text = ReadContentsOfFile(path);
    lines.clear();  // the path may be one of them
    if (text.empty()) return;
    std::string_view rest = text;
    for (;;) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        lines.emplace_back(line.substr(0, kLongestLine));
        if (line.size() > kLongestLine || line.size() == rest.size()) return;
        rest.remove_prefix(line.size() + 1);
    }
}

std::string FileSystemUtils::ReadSingleLineFromFile(const char* path) {
    return ReadSingleLineFromFile(std::string(path));
}

std::string FileSystemUtils::ReadSingleLineFromFile(const std::string& path) {
    TextMode reader;
    std::size_t lineEnd = 0;  // or that of what is read
    const bool isRead = ReadPieces(path, [&](std::string_view piece) {
        const bool goesOn = reader.Add(piece);
        lineEnd = std::min(reader.Text().find('\n', lineEnd), reader.Text().size());
        return goesOn && lineEnd == reader.Text().size() && lineEnd <= kLongestFirstLine;
    });
    if (!isRead || !IsShortEnough(lineEnd)) return {};
    reader.Finish();
    platform::SetLastErrorCode(0);
    return reader.Text().substr(0, reader.Text().find('\n', lineEnd));
}

}  // namespace quillon
