#include "data/DisplayedText.h"

#include <algorithm>

#include "base/DirectionMark.h"
#include "base/HexDigits.h"
#include "base/Utf8Cut.h"
#include "data/ControlEscape.h"
#include "data/DataTableColumns.h"

namespace quillon {
namespace {

using base::DirectionMark;

/// Returns the prefix of so many characters.
std::string_view FirstCharacters(std::string_view utf8, std::size_t count) {
    std::size_t end = 0;
    for (; end < utf8.size(); ++end) {
        if (!base::IsUtf8Continuation(utf8[end]) && count-- == 0) break;
    }
    return utf8.substr(0, end);
}

/// Returns the length of the character at the front of valid UTF-8 that must be escaped, else 0.
std::size_t EscapedLength(std::string_view utf8) {
    if (utf8.empty()) return 0;
    const auto byte = static_cast<unsigned char>(utf8.front());
    if (byte < 0x20 || byte == 0x7F) return 1;
    if (byte == 0xC2 && static_cast<unsigned char>(utf8[1]) < 0xA0) return 2;
    if (DirectionMark(utf8) != 0) return byte == 0xD8 ? 2 : 3;
    return 0;
}

void AppendEscape(std::string& output, std::string_view character) {
    if (const unsigned mark = DirectionMark(character); mark != 0) {
        output += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4) output += base::kUpperDigits[mark >> shift & 15];
    } else {
        AppendControlEscape(output, static_cast<unsigned char>(character.back()));
    }
}

/// Whether a backslash before this text would read as an escape.
bool ReadsAsEscape(std::string_view rest) {
    constexpr std::string_view kEscapes = "tnru\\";
    return EscapedLength(rest) > 0 ||
           (!rest.empty() && kEscapes.find(rest.front()) != std::string_view::npos);
}

}  // namespace

std::size_t CountCharacters(std::string_view utf8) {
    return utf8.size() -
           static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), base::IsUtf8Continuation));
}

std::string Displayed(std::string_view text) {
    std::string buffer, result;
    const std::string_view valid = ValidUtf8(text, buffer);
    result.reserve(valid.size());
    for (std::size_t i = 0; i < valid.size();) {
        const std::string_view rest = valid.substr(i);
        const std::size_t escaped = EscapedLength(rest);
        if (escaped > 0) {
            AppendEscape(result, rest.substr(0, escaped));
        } else {
            if (rest.front() == '\\' && ReadsAsEscape(rest.substr(1))) result += '\\';
            result += rest.front();
        }
        i += std::max<std::size_t>(escaped, 1);
    }
    return result;
}

void AppendCut(std::string& output, std::string_view text, std::size_t width, std::string_view ellipsis) {
    const std::string_view mark = FirstCharacters(ellipsis, width);
    output += FirstCharacters(text, width - CountCharacters(mark));
    output += mark;
}

void CutLine(std::string& output, std::size_t start, std::size_t width, std::string_view ellipsis) {
    if (output.size() - start <= width) return;
    const std::string line = output.substr(start);
    if (CountCharacters(line) <= width) return;
    output.resize(start);
    AppendCut(output, line, width, ellipsis);
}

}  // namespace quillon
