#include "data/JsonText.h"

#include "base/ByteScan.h"
#include "data/ControlEscape.h"
#include "data/DataTableColumns.h"

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

/// Appends valid UTF-8, of which the first bytes until `special` are plain.
void AppendWithEscapes(std::string& output, const char* position, const char* end, const char* special) {
    for (;;) {
        output.append(position, special);
        if (special == end) return;
        AppendEscaped(output, *special);
        position = special + 1;
        special = base::FindJsonSpecial<false>(position, end);
    }
}

}  // namespace

void AppendJsonString(std::string& output, std::string_view text) {
    const char* position = text.data();
    const char* end = position + text.size();
    output += '"';
    const char* special = base::FindJsonSpecial<true>(position, end);
    if (special == end) {
        output.append(position, end);
    } else {
        std::string buffer;
        const std::string_view valid = ValidUtf8(text, buffer);
        position = valid.data();
        end = position + valid.size();
        AppendWithEscapes(output, position, end, base::FindJsonSpecial<false>(position, end));
    }
    output += '"';
}

}  // namespace quillon
