#include "base/MarkdownText.h"

#include <algorithm>
#include <cstddef>

#include "base/Characters.h"

namespace quillon::base {

namespace {

/// Lists the characters that Markdown, its tables, HTML or mathematics would read as their own.
constexpr std::string_view kMarkup = "\\`*_[]<>|~&$#";

/// Returns the length of the scheme at the front of the text, up to its colon; 0 when it has none of the
/// web.
std::size_t SchemeLength(std::string_view text) {
    static constexpr std::string_view kSchemes[] = {"https://", "http://", "ftp://"};
    for (const std::string_view scheme : kSchemes) {
        if (EqualIgnoringCase(text.substr(0, scheme.size()), scheme)) return scheme.find(':');
    }
    return 0;
}

/// Returns the length of the address of the web at the front of the text, without the punctuation of the
/// sentence around it; 0 when there is none.
std::size_t UrlLength(std::string_view text) {
    const std::size_t scheme = SchemeLength(text);
    if (scheme == 0) return 0;
    const auto ends = [](char c) {
        return static_cast<unsigned char>(c) <= ' ' || c == '\x7F' || c == '<' || c == '>' || c == '"';
    };
    std::string_view url(
        text.data(), static_cast<std::size_t>(std::find_if(text.begin(), text.end(), ends) - text.begin()));
    const bool hasParenthesis = url.find('(') != std::string_view::npos;
    while (std::string_view(".,;:!?').]").find(url.back()) != std::string_view::npos) {
        if (url.back() == ')' && hasParenthesis) break;
        url.remove_suffix(1);
    }
    return url.size() > scheme + std::string_view("://").size() ? url.size() : 0;
}

/// Whether the text after a '&' makes it the beginning of an entity, such as "&amp;" or "&#33;".
bool EndsEntity(std::string_view rest) {
    const auto isPart = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '#';
    };
    const auto end = std::find_if_not(rest.begin(), rest.end(), isPart);
    return end != rest.begin() && end != rest.end() && *end == ';';
}

/// Writes an address as an autolink, in which no markup but entities is read and no escape is removed. A
/// bar would end the cell of a table.
std::string Autolink(std::string_view url) {
    std::string result = "<";
    for (std::size_t i = 0; i < url.size(); ++i) {
        if (url[i] == '|') {
            result += "%7C";
        } else if (url[i] == '&' && EndsEntity(url.substr(i + 1))) {
            result += "&amp;";
        } else {
            result += url[i];
        }
    }
    return result += '>';
}

/// Writes what some renderers take for the beginning of an address, escapes behind it included, so that
/// they do not. Returns how many characters of the text that were.
std::size_t BreakAddress(std::string& output, std::string_view text) {
    constexpr std::string_view kWeb = "www";
    const std::size_t length = text.starts_with("www.") ? kWeb.size() : SchemeLength(text);
    if (length > 0) (output.append(text.substr(0, length)) += '\\') += text[length];
    return length > 0 ? length + 1 : 0;
}

}  // namespace

std::string MarkdownText(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const char character = text.front();
        std::size_t taken = UrlLength(text);
        if (taken > 0) {
            result += Autolink(text.substr(0, taken));
        } else if (taken = BreakAddress(result, text); taken == 0) {
            taken = text.starts_with("\r\n") ? 2 : 1;
            const bool ends = character == '\r' || character == '\n';
            if (kMarkup.find(character) != std::string_view::npos) result += '\\';
            result += ends ? std::string_view("<br>") : text.substr(0, 1);
        }
        text.remove_prefix(taken);
    }
    return result;
}

}  // namespace quillon::base
