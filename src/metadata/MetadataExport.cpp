#include "quillon/MetadataExport.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "base/Characters.h"
#include "metadata/MethodDescription.h"

namespace quillon {
namespace {

using Json = nlohmann::ordered_json;

/// Lists the characters that Markdown, its tables, HTML or mathematics would read as their own.
constexpr std::string_view kMarkup = "\\`*_[]<>|~&$#";
constexpr std::string_view kBlockMarks = "+-=";
constexpr std::string_view kDigits = "0123456789";

/// Returns the length of the scheme at the front of the text, up to its colon; 0 when it has none of the
/// web.
std::size_t SchemeLength(std::string_view text) {
    for (const std::string_view scheme : {"https://", "http://", "ftp://"}) {
        if (base::EqualIgnoringCase(text.substr(0, scheme.size()), scheme)) return scheme.find(':');
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

/// Escapes a text so that a reader sees it as it is, on one line; a line end becomes a break.
std::string Escaped(std::string_view text) {
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

/// A paragraph must not begin as a heading, a list or an indented block does.
std::string Paragraph(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (text.empty()) return {};
    std::string escaped = Escaped(text);
    const std::size_t mark = escaped.find_first_not_of(kDigits);
    const std::string_view marks = mark == 0 ? kBlockMarks : ".)";
    if (mark != std::string::npos && marks.find(escaped[mark]) != std::string_view::npos)
        escaped.insert(mark, "\\");
    return escaped + "\n\n";
}

std::string JsonText(const Json& value) {
    if (value.is_null()) return {};
    return value.is_string() ? value.get<std::string>()
                             : value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Returns the warnings, notes and versions of a method, a parameter or a column as sentences in
/// Markdown.
std::vector<std::string> Remarks(const Json& item) {
    std::vector<std::string> remarks;
    for (const Json& text : item["warnings"]) remarks.push_back("**Warning:** " + Escaped(JsonText(text)));
    for (const Json& text : item["notes"]) remarks.push_back("**Note:** " + Escaped(JsonText(text)));
    std::string introduced;
    for (const auto& [platform, version] : item["introduced"].items())
        introduced += (introduced.empty() ? "" : ", ") + platform + " " + JsonText(version);
    if (!introduced.empty()) remarks.push_back("**Introduced:** " + introduced);
    if (const Json& deprecated = item["deprecated"]; !deprecated.is_null()) {
        remarks.push_back("**Deprecated** since " + JsonText(deprecated["version"]) + ": " +
                          Escaped(JsonText(deprecated["text"])));
    }
    return remarks;
}

std::string DescriptionCell(const Json& item) {
    std::string cell = Escaped(JsonText(item["description"]));
    for (const std::string& remark : Remarks(item)) cell += (cell.empty() ? "" : "<br>") + remark;
    return cell;
}

std::string ParameterRow(const Json& parameter) {
    return "| " + Escaped(JsonText(parameter["name"])) + " | " + JsonText(parameter["type"]) + " | " +
           (parameter["optional"].get<bool>() ? "yes" : "no") + " | " +
           Escaped(JsonText(parameter["default"])) + " | " + DescriptionCell(parameter) + " |\n";
}

std::string ColumnRow(const Json& column) {
    return "| " + Escaped(JsonText(column["name"])) + " | " + JsonText(column["type"]) + " | " +
           (column["alternative"].get<bool>() ? "yes" : "no") + " | " + DescriptionCell(column) + " |\n";
}

/// Returns a table of the items, followed by the description of those without a row.
std::string Section(std::string_view title, std::string_view header, std::string (*row)(const Json&),
                    const Json& items, const Json& additional) {
    if (items.empty() && additional.is_null()) return {};
    std::string result = "### " + std::string(title) + "\n\n";
    if (!items.empty()) {
        result += header;
        for (const Json& item : items) result += row(item);
        result += '\n';
    }
    if (!additional.is_null()) result += "**And others:** " + Escaped(JsonText(additional)) + "\n\n";
    return result;
}

/// Returns a fenced block whose fence no line of the text can end.
std::string Example(const std::string& text) {
    if (text.empty()) return {};
    std::size_t longest = 2, run = 0;
    for (const char character : text) {
        run = character == '`' ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    const std::string fence(longest + 1, '`');
    return "### Example\n\n" + fence + "\n" + text + "\n" + fence + "\n\n";
}

}  // namespace

std::string ToJson(const IMethodMetadataReader& method) {
    return DescribeMethod(method).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string ToMarkdown(const IMethodMetadataReader& method) {
    const Json description = DescribeMethod(method);
    std::string result = "## " + Escaped(JsonText(description["name"])) + "\n\n";
    result += Paragraph(JsonText(description["description"]));
    for (const std::string& remark : Remarks(description)) result += remark + "\n\n";
    for (const Json& flag : description["flags"]) result += "- " + JsonText(flag) + "\n";
    if (!description["flags"].empty()) result += '\n';
    result += Section("Parameters",
                      "| Name | Type | Optional | Default | Description |\n"
                      "| --- | --- | --- | --- | --- |\n",
                      ParameterRow, description["parameters"], description["additionalParameters"]);
    result += Section("Columns",
                      "| Name | Type | Alternative | Description |\n"
                      "| --- | --- | --- | --- |\n",
                      ColumnRow, description["columns"], description["additionalColumns"]);
    result += Example(JsonText(description["example"]));
    result.pop_back();  // every part ends with an empty line
    return result;
}

}  // namespace quillon
