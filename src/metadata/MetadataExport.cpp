#include "quillon/MetadataExport.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "base/MarkdownText.h"
#include "metadata/MethodDescription.h"

namespace quillon {
namespace {

using base::MarkdownText;
using Json = nlohmann::ordered_json;

constexpr std::string_view kBlockMarks = "+-=";
constexpr std::string_view kDigits = "0123456789";

/// A paragraph must not begin as a heading, a list or an indented block does.
std::string Paragraph(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (text.empty()) return {};
    std::string escaped = MarkdownText(text);
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
    for (const Json& text : item["warnings"])
        remarks.push_back("**Warning:** " + MarkdownText(JsonText(text)));
    for (const Json& text : item["notes"]) remarks.push_back("**Note:** " + MarkdownText(JsonText(text)));
    std::string introduced;
    for (const auto& [platform, version] : item["introduced"].items())
        introduced += (introduced.empty() ? "" : ", ") + platform + " " + JsonText(version);
    if (!introduced.empty()) remarks.push_back("**Introduced:** " + introduced);
    if (const Json& deprecated = item["deprecated"]; !deprecated.is_null()) {
        remarks.push_back("**Deprecated** since " + JsonText(deprecated["version"]) + ": " +
                          MarkdownText(JsonText(deprecated["text"])));
    }
    return remarks;
}

std::string DescriptionCell(const Json& item) {
    std::string cell = MarkdownText(JsonText(item["description"]));
    for (const std::string& remark : Remarks(item)) cell += (cell.empty() ? "" : "<br>") + remark;
    return cell;
}

std::string ParameterRow(const Json& parameter) {
    return "| " + MarkdownText(JsonText(parameter["name"])) + " | " + JsonText(parameter["type"]) + " | " +
           (parameter["optional"].get<bool>() ? "yes" : "no") + " | " +
           MarkdownText(JsonText(parameter["default"])) + " | " + DescriptionCell(parameter) + " |\n";
}

std::string ColumnRow(const Json& column) {
    return "| " + MarkdownText(JsonText(column["name"])) + " | " + JsonText(column["type"]) + " | " +
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
    if (!additional.is_null()) result += "**And others:** " + MarkdownText(JsonText(additional)) + "\n\n";
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
    std::string result = "## " + MarkdownText(JsonText(description["name"])) + "\n\n";
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
