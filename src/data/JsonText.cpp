#include "data/JsonText.h"

#include "data/ControlEscape.h"
#include "data/DataTableColumns.h"
#include "data/SpecialBytes.h"

namespace quillon {
namespace {

void AppendEscaped(std::string& output, char character) {
    if (character == '"' || character == '\\') {
        output += '\\';
        output += character;
    } else {
        AppendControlEscape(output, static_cast<unsigned char>(character));
    }
}

/// Appends a text with its escapes; with HighBytes until the first byte that is not ASCII, which is
/// returned.
template <AlsoFind also>
const char* AppendWithEscapes(std::string& output, const char* position, const char* end) {
    for (;;) {
        const char* const special = FindJsonSpecial<also>(position, end);
        output.append(position, special);
        if (special == end || !NeedsJsonEscape(*special)) return special;
        AppendEscaped(output, *special);
        position = special + 1;
    }
}

}  // namespace

void AppendJsonString(std::string& output, std::string_view text) {
    const char* const end = text.data() + text.size();
    output += '"';
    const char* const high = AppendWithEscapes<AlsoFind::HighBytes>(output, text.data(), end);
    if (high != end) {
        std::string buffer;
        const std::string_view valid = ValidUtf8({high, end}, buffer);
        AppendWithEscapes<AlsoFind::Nothing>(output, valid.data(), valid.data() + valid.size());
    }
    output += '"';
}

}  // namespace quillon
