#include "modules/TableLayout.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <sstream>
#include <utility>

#include "common/Failure.h"
#include "quillon/StringUtils.h"
#include "quillon/TextFields.h"
#include "quillon/TextToDataTableParser.h"

namespace quillon::agent {

namespace {

/// Where line number `line` begins, counted from 0.
std::size_t StartOfLine(const std::string& text, long long line) {
    std::size_t start = 0;
    for (; line > 0; --line) {
        const std::size_t end = text.find('\n', start);
        if (end == std::string::npos) return text.size();
        start = end + 1;
    }
    return start;
}

constexpr const char* kAllOfHeading = "*";
constexpr const char* kWideHeading = "**";

/// Null when the text is no extent.
std::unique_ptr<IParsableField> MakeExtent(const std::string& extent) {
    if (extent.empty() || extent == "blank") return std::make_unique<BlankSeparatedField>();
    if (extent == "space") return std::make_unique<SpaceSeparatedField>();
    if (extent == "rest") return std::make_unique<NullSeparatedField>();
    if (extent == "comma") return std::make_unique<CharSeparatedField>(',');
    if (extent == "semicolon") return std::make_unique<CharSeparatedField>(';');
    if (extent == "tab") return std::make_unique<CharSeparatedField>('\t');
    if (extent == "quoted") return std::make_unique<QuotedField>();
    std::size_t width = 0;
    const char* const end = extent.data() + extent.size();
    const auto [stop, error] = std::from_chars(extent.data(), end, width);
    if (error != std::errc() || stop != end || width == 0) return nullptr;
    return std::make_unique<FixedWidthField>(width);
}

}  // namespace

bool TableLayout::Read(const std::string& text, InvocationResult& result) {
    m_headingBlanks = text == kAllOfHeading ? 1 : text == kWideHeading ? 2 : 0;
    if (m_headingBlanks > 0) return true;
    std::istringstream columns(text);
    std::string column;
    std::string fault;
    while (fault.empty() && columns >> column) {
        fault = Add(column);
        if (!fault.empty()) fault = "Column '" + column + "' of the 'columns' parameter " + fault;
    }
    if (fault.empty() && m_fields.empty()) fault = "'columns' parameter cannot be empty";
    return fault.empty() || RefuseParameter(fault, result);
}

/// Each of these gives what is wrong with the column, or nothing.
std::string TableLayout::Add(const std::string& column) {
    std::vector<std::string> parts;
    StringUtils::SplitByChar(column, ':', parts);
    Field field;
    field.name = parts[0];
    if (field.name.empty()) return "has no name";
    if (parts.size() > 3) return "has more than a name, a type and an extent";
    const bool isRepeated = std::any_of(m_fields.begin(), m_fields.end(),
                                        [&field](const Field& other) { return other.name == field.name; });
    if (isRepeated) return "is there twice";
    if (!m_fields.empty() && m_fields.back().isRest) return "follows one that takes the rest of the line";
    std::string fault;
    if (parts.size() > 1) fault = ReadType(parts[1], field);
    if (fault.empty() && parts.size() > 2) fault = ReadExtent(parts[2], field);
    if (fault.empty()) m_fields.push_back(std::move(field));
    return fault;
}

std::string TableLayout::ReadType(const std::string& text, Field& field) {
    const std::size_t star = text.find('*');
    const std::string type = text.substr(0, star);
    if (type == "integer") {
        field.type = Type::Integer;
    } else if (type == "boolean") {
        field.type = Type::Boolean;
    } else if (type == "real") {
        field.type = Type::Real;
    } else if (type == "time") {
        field.type = Type::Time;
    } else if (type != "text") {
        return "has a type that is not text, integer, real, boolean or time";
    }
    if (star == std::string::npos) return {};
    if (field.type != Type::Integer && field.type != Type::Real) return "has a factor but is no number";
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + star + 1, end, field.factor);
    const bool isFactor = error == std::errc() && stop == end && field.factor != 0;
    return isFactor ? "" : "has a factor that is not a whole number other than 0";
}

std::string TableLayout::ReadExtent(const std::string& text, Field& field) {
    field.extent = text;
    field.isRest = text == "rest";
    return MakeExtent(text) != nullptr
               ? ""
               : "has an extent that is not blank, space, comma, semicolon, tab, quoted, "
                 "rest or a number of characters";
}

Variant TableLayout::DefinitionOf(const Field& field) {
    switch (field.type) {
        case Type::Text:
            return Variant(field.name, "");
        case Type::Integer:
            return Variant(field.name, 0);
        case Type::Real:
            return Variant(field.name, 0.0);
        case Type::Boolean:
            return Variant(field.name, false);
        case Type::Time:
            break;  // a table has no column for times
    }
    return Variant::NullVariant(field.name);
}

VariantList TableLayout::Definitions() const {
    VariantList definitions;
    for (const Field& field : m_fields) definitions.Add(DefinitionOf(field));
    return definitions;
}

void TableLayout::AddColumn(const Field& field, TextToDataTableParser& parser) {
    std::unique_ptr<IParsableField> extent = MakeExtent(field.extent);
    switch (field.type) {
        case Type::Text:
            return parser.AddField<std::string>(field.name, std::move(extent));
        case Type::Integer:
            return parser.AddField<long long>(field.name, std::move(extent), field.factor);
        case Type::Real:
            return parser.AddField<double>(field.name, std::move(extent), field.factor);
        case Type::Boolean:
            return parser.AddField<bool>(field.name, std::move(extent));
        case Type::Time:
            return parser.AddField<TimePoint>(field.name, std::move(extent));
    }
}

DataTable TableLayout::Parse(const std::string& text, long long skip) const {
    DataTable table;
    table.SetDefaultColumns(Definitions());
    TextToDataTableParser parser;
    std::size_t start = StartOfLine(text, skip);
    if (m_headingBlanks > 0) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const auto columns = ReadTextHeading(text.substr(start, end - start), m_headingBlanks);
        for (const TextColumn& column : columns) table.AddStringCol(column.name);
        AddTextColumns(parser, columns);
        start = std::min(end + 1, text.size());
    }
    for (const Field& field : m_fields) AddColumn(field, parser);
    parser.Parse(text.substr(start), table);
    return table;
}

}  // namespace quillon::agent
