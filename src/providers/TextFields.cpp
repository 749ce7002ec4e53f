#include "quillon/TextFields.h"

#include <algorithm>
#include <string_view>

#include "base/Utf8Cut.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

void SkipBlanks(const char*& cursor) {
    while (IsBlank(*cursor)) ++cursor;
}

std::size_t CountCharacters(std::string_view text) {
    return text.size() -
           static_cast<std::size_t>(std::count_if(text.begin(), text.end(), base::IsUtf8Continuation));
}

/// Where a column begins and what is its name.
struct Start {
    std::size_t at;
    std::string name;
};

std::vector<TextColumn> ColumnsOf(std::string_view line, std::vector<Start> starts) {
    std::vector<TextColumn> columns;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const std::size_t begin = i == 0 ? 0 : starts[i].at;
        const bool isLast = i + 1 == starts.size();
        const std::size_t width = isLast ? 0 : CountCharacters(line.substr(begin, starts[i + 1].at - begin));
        columns.push_back({std::move(starts[i].name), width});
    }
    return columns;
}

}  // namespace

BlankSeparatedField::BlankSeparatedField() = default;
BlankSeparatedField::~BlankSeparatedField() = default;

bool BlankSeparatedField::Parse(const char** cursor, std::string& value) {
    SkipBlanks(*cursor);
    const char* const start = *cursor;
    while (**cursor != '\0' && !IsBlank(**cursor)) ++*cursor;
    value.append(start, *cursor);
    SkipBlanks(*cursor);
    return true;
}

FixedWidthField::FixedWidthField(std::size_t width) : m_width(width) {}
FixedWidthField::~FixedWidthField() = default;

bool FixedWidthField::Parse(const char** cursor, std::string& value) {
    const char* const start = *cursor;
    for (std::size_t left = m_width; **cursor != '\0' && (m_width == 0 || left > 0); --left) {
        do {
            ++*cursor;
        } while (base::IsUtf8Continuation(**cursor));
    }
    value.append(start, *cursor);
    return true;
}

CharSeparatedField::CharSeparatedField(char separator) : m_separator(separator) {}
CharSeparatedField::~CharSeparatedField() = default;

bool CharSeparatedField::Parse(const char** cursor, std::string& value) {
    const char* const start = *cursor;
    while (**cursor != '\0' && **cursor != m_separator) ++*cursor;
    value.append(start, *cursor);
    if (**cursor != '\0') ++*cursor;
    return true;
}

QuotedField::QuotedField(char separator) : m_separator(separator) {}
QuotedField::~QuotedField() = default;

bool QuotedField::Parse(const char** cursor, std::string& value) {
    const char*& at = *cursor;
    while (*at == ' ' && m_separator != ' ') ++at;
    if (*at == '"') {
        for (++at; *at != '\0' && (*at != '"' || at[1] == '"'); ++at) {
            if (*at == '"') ++at;
            value.push_back(*at);
        }
        if (*at == '"') ++at;
    }
    return CharSeparatedField(m_separator).Parse(cursor, value);
}

std::vector<TextColumn> ReadTextHeading(const std::string& heading, std::size_t blanks) {
    const std::string_view line =
        std::string_view(heading).substr(0, heading.find_last_not_of(" \t\r\n") + 1);
    const std::string gap(std::max<std::size_t>(blanks, 1), ' ');
    std::vector<Start> starts;
    for (std::size_t at = line.find_first_not_of(' '); at < line.size();) {
        const std::size_t end = std::min(line.find(gap, at), line.size());
        starts.push_back({at, std::string(line.substr(at, end - at))});
        at = end == line.size() ? end : line.find_first_not_of(' ', end);
    }
    return ColumnsOf(line, std::move(starts));
}

std::vector<TextColumn> ReadTextRuler(const std::string& heading, const std::string& ruler) {
    std::vector<TextColumn> columns = ReadTextHeading(ruler);
    const char* cursor = heading.c_str();
    for (TextColumn& column : columns) {
        column.name.clear();
        FixedWidthField(column.width).Parse(&cursor, column.name);
        StringUtils::Trim(column.name);
    }
    return columns;
}

void AddTextColumns(TextToDataTableParser& parser, const std::vector<TextColumn>& columns) {
    for (const TextColumn& column : columns)
        parser.AddField<std::string>(column.name, std::make_unique<FixedWidthField>(column.width));
}

}  // namespace quillon
