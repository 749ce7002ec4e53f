#include "modules/TableLayout.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <sstream>

#include "modules/Module.h"
#include "quillon/StringUtils.h"
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

std::unique_ptr<IParsableField> MakeExtent(bool isRest) {
    if (isRest) return std::make_unique<NullSeparatedField>();
    return std::make_unique<SpaceSeparatedField>();
}

}  // namespace

bool TableLayout::Read(const std::string& text, InvocationResult& result) {
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
    Field field{.name = parts[0]};
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
    } else if (type != "text") {
        return "has a type that is not text, integer or boolean";
    }
    if (star == std::string::npos) return {};
    if (field.type != Type::Integer) return "has a factor but is no integer";
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + star + 1, end, field.factor);
    const bool isFactor = error == std::errc() && stop == end && field.factor != 0;
    return isFactor ? "" : "has a factor that is not a whole number other than 0";
}

std::string TableLayout::ReadExtent(const std::string& text, Field& field) {
    field.isRest = text == "rest";
    return field.isRest || text == "space" ? "" : "has an extent that is not space or rest";
}

DataTable TableLayout::Parse(const std::string& text, long long skip) const {
    DataTable table;
    TextToDataTableParser parser;
    for (const Field& field : m_fields) {
        std::unique_ptr<IParsableField> extent = MakeExtent(field.isRest);
        if (field.type == Type::Integer) {
            table.AddLongLongCol(field.name);
            parser.AddField<long long>(field.name, extent.release(), field.factor);
        } else if (field.type == Type::Boolean) {
            table.AddBoolCol(field.name);
            parser.AddField<bool>(field.name, extent.release(), 0);
        } else {
            table.AddStringCol(field.name);
            parser.AddField<std::string>(field.name, extent.release(), 0);
        }
    }
    parser.Parse(text.substr(StartOfLine(text, skip)), table);
    return table;
}

}  // namespace quillon::agent
