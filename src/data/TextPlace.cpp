#include "data/TextPlace.h"

#include <algorithm>

#include "base/Utf8Cut.h"
#include "quillon/DataTableIO.h"

namespace quillon {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsCharacterStart(char byte) { return !base::IsUtf8Continuation(byte); }

/// Lines end with LF, CR LF or CR; columns count code points.
TextPlace FindPlace(std::string_view text, std::size_t record, std::size_t offset) {
    TextPlace place{record, 1, 1, offset + 1};
    const std::size_t first = text.size() - WithoutByteOrderMark(text).size();
    std::size_t lineStart = std::min(first, offset);
    for (std::size_t i = lineStart; i < offset; ++i) {
        const bool ends = text[i] == '\n' || (text[i] == '\r' && !text.substr(i + 1).starts_with('\n'));
        if (!ends) continue;
        ++place.line;
        lineStart = i + 1;
    }
    const std::string_view before = text.substr(lineStart, offset - lineStart);
    place.column += static_cast<std::size_t>(std::count_if(before.begin(), before.end(), IsCharacterStart));
    return place;
}

}  // namespace

std::string_view WithoutByteOrderMark(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    return text;
}

void ThrowFormatError(std::string_view unit, std::size_t record, std::string_view text, std::size_t offset,
                      const std::string& reason) {
    throw TableFormatError(std::string(unit), FindPlace(text, record, offset), reason);
}

void RefuseUtf16(std::string_view unit, std::string_view text) {
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
        ThrowFormatError(unit, 1, text, 0, "the text is UTF-16, not UTF-8");
    }
}

TableFormatError::TableFormatError(const std::string& message) : std::runtime_error(message) {}

TableFormatError::TableFormatError(const std::string& unit, const TextPlace& place, const std::string& reason)
    : std::runtime_error(unit + ' ' + std::to_string(place.record) + ", line " + std::to_string(place.line) +
                         ", column " + std::to_string(place.column) + ": " + reason),
      m_place(place),
      m_reasonLength(reason.size()) {}

TableFormatError::~TableFormatError() = default;

const TextPlace& TableFormatError::Place() const { return m_place; }

std::string TableFormatError::Reason() const {
    const std::string message = what();
    return message.substr(message.size() - std::min(m_reasonLength, message.size()));
}

}  // namespace quillon
