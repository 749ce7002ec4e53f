#include "quillon/Wql.h"

namespace quillon {

namespace {

void AppendEscaped(std::string& text, char c) {
    if (c == '\\' || c == '\'' || c == '"') text += '\\';
    text += c;
}

}  // namespace

std::string WqlEscape(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size() + 2);
    for (const char c : text) AppendEscaped(escaped, c);
    return escaped;
}

std::string WqlQuote(std::string_view text) { return '\'' + WqlEscape(text) + '\''; }

std::string WqlLikeEscape(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        if (c == '%' || c == '_' || c == '[') {
            escaped.append({'[', c, ']'});
        } else {
            AppendEscaped(escaped, c);
        }
    }
    return escaped;
}

}  // namespace quillon
