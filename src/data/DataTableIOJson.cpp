#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "data/ControlEscape.h"
#include "data/DataTableColumns.h"
#include "quillon/DataTableIO.h"

namespace quillon {
namespace {

constexpr std::size_t kDeepestNesting = 64;
constexpr std::string_view kWhiteSpace = " \t\r\n";

void AppendEscaped(std::string& output, char character) {
    if (character == '"' || character == '\\') {
        output += '\\';
        output += character;
    } else {
        AppendControlEscape(output, static_cast<unsigned char>(character));
    }
}

bool NeedsEscape(char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
}

void AppendString(std::string& output, std::string_view text) {
    std::string buffer;
    const std::string_view valid = ValidUtf8(text, buffer);
    output += '"';
    std::size_t copied = 0;
    for (std::size_t i = 0; i < valid.size(); ++i) {
        if (!NeedsEscape(valid[i])) continue;
        output += valid.substr(copied, i - copied);
        AppendEscaped(output, valid[i]);
        copied = i + 1;
    }
    output += valid.substr(copied);
    output += '"';
}

void AppendNumber(std::string& output, double value) {
    if (std::isfinite(value)) {
        AppendDouble(output, value);
    } else {
        output += "null";
    }
}

void AppendValue(std::string& output, const Variant* cell) {
    if (cell == nullptr || cell->IsNull()) {
        output += "null";
    } else if (cell->TypeIs(typeid(std::string))) {
        AppendString(output, cell->GetStringValue());
    } else if (cell->TypeIs(typeid(long long))) {
        AppendInteger(output, cell->GetLongLongValue());
    } else if (cell->TypeIs(typeid(bool))) {
        output += cell->GetBoolValue() ? "true" : "false";
    } else if (cell->TypeIs(typeid(double))) {
        AppendNumber(output, cell->GetDoubleValue());
    } else {
        AppendString(output, cell->AsString());
    }
}

/// Writes rows as objects; the names are escaped once.
class RowWriter {
public:
    explicit RowWriter(const DataTable& table) : m_columns(table) {
        for (const std::string& name : m_columns.Names()) {
            std::string& key = m_keys.emplace_back(m_keys.empty() ? "" : ",");
            AppendString(key, name);
            key += ':';
        }
    }

    void Append(std::string& output, const VariantList& row) {
        output += '{';
        auto key = m_keys.begin();
        for (const Variant* cell : m_columns.CellsOf(row)) {
            output += *key++;
            AppendValue(output, cell);
        }
        output += '}';
    }

private:
    DataTableColumns m_columns;
    std::vector<std::string> m_keys;
};

/// `byte` counts from 1.
[[noreturn]] void FailAt(std::size_t byte) {
    throw TableFormatError("JSON: cannot be read at byte " + std::to_string(byte));
}

/// Receives the events of a parser that keeps its own stack, so that hostile
/// nesting costs no call stack, and makes rows of the objects at one depth.
class RowReader final : public nlohmann::json_sax<nlohmann::json> {
public:
    /// `rowDepth` counts the containers around a row, `offset` the bytes before the text.
    RowReader(DataTable& table, std::size_t rowDepth, std::size_t offset)
        : m_table(table), m_rowDepth(rowDepth), m_offset(offset) {}

    bool null() override {
        if (IsCell()) return AddCell(Variant::NullVariant(m_name));
        return AppendNested("null");
    }
    bool boolean(bool value) override {
        if (IsCell()) return AddCell(Variant(m_name, value));
        return AppendNested(value ? "true" : "false");
    }
    bool number_integer(number_integer_t value) override {
        if (IsCell()) return AddCell(Variant(m_name, static_cast<long long>(value)));
        return AppendNested(std::to_string(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        if (value <= static_cast<number_unsigned_t>(std::numeric_limits<number_integer_t>::max())) {
            return number_integer(static_cast<number_integer_t>(value));
        }
        return number_float(static_cast<double>(value), std::to_string(value));
    }
    bool number_float(number_float_t value, const string_t& literal) override {
        if (IsCell()) return AddCell(Variant(m_name, value));
        return AppendNested(literal);
    }
    bool string(string_t& value) override {
        if (IsCell()) return AddCell(Variant(m_name, std::move(value)));
        std::string quoted;
        AppendString(quoted, value);
        return AppendNested(quoted);
    }
    bool binary(binary_t&) override { return false; }

    bool key(string_t& name) override {
        if (m_depth == m_rowDepth + 1) {
            m_name = std::move(name);
            return true;
        }
        std::string quoted;
        AppendString(quoted, name);
        quoted += ':';
        return AppendNested(quoted);
    }
    bool start_object(std::size_t) override {
        if (m_depth != m_rowDepth) return Open("{");
        ++m_depth;
        return true;
    }
    bool start_array(std::size_t) override {
        if (m_depth >= m_rowDepth) return Open("[");
        ++m_depth;
        return true;
    }
    bool end_object() override {
        if (m_depth > m_rowDepth + 1) return Close('}');
        --m_depth;
        m_table.AddRow(std::move(m_row));
        m_row = VariantList();
        return true;
    }
    bool end_array() override {
        if (m_depth > m_rowDepth) return Close(']');
        --m_depth;
        return true;
    }

    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception&) override {
        FailAt(m_offset + position);
    }

private:
    [[noreturn]] void Fail(const std::string& reason) const {
        throw TableFormatError("JSON row " + std::to_string(m_table.GetNumberOfRows() + 1) + ": " + reason);
    }

    /// Whether the value just read is a cell; else it is part of one. Fails outside a row.
    bool IsCell() const {
        if (m_depth <= m_rowDepth) Fail("not an object");
        return m_depth == m_rowDepth + 1;
    }

    bool AddCell(Variant&& cell) {
        m_row.Add(std::move(cell));
        return true;
    }

    bool AppendNested(std::string_view token) {
        const bool first =
            m_nested.empty() || std::string_view("[{:").find(m_nested.back()) != std::string_view::npos;
        if (!first) m_nested += ',';
        m_nested += token;
        return true;
    }

    bool Open(std::string_view bracket) {
        IsCell();
        if (m_depth - m_rowDepth > kDeepestNesting) Fail("values are nested too deep");
        ++m_depth;
        return AppendNested(bracket);
    }

    bool Close(char bracket) {
        m_nested += bracket;
        --m_depth;
        return m_depth > m_rowDepth + 1 || AddCell(Variant(m_name, std::exchange(m_nested, {})));
    }

    DataTable& m_table;
    const std::size_t m_rowDepth;
    const std::size_t m_offset;
    std::size_t m_depth = 0;  // of open containers
    VariantList m_row;
    std::string m_name;    // of the cell that is being read
    std::string m_nested;  // its text so far, when it is an array or object
};

void ReadLines(DataTable& table, std::string_view json) {
    for (std::size_t start = 0, end = 0; start < json.size(); start = end + 1) {
        end = std::min(json.find('\n', start), json.size());
        const std::string_view line = json.substr(start, end - start);
        if (line.find_first_not_of(kWhiteSpace) == std::string_view::npos) continue;
        RowReader reader(table, 0, start);
        nlohmann::json::sax_parse(line, &reader);
    }
}

}  // namespace

TableFormatError::TableFormatError(const std::string& message) : std::runtime_error(message) {}
TableFormatError::~TableFormatError() = default;

std::string ToJson(const DataTable& table) {
    RowWriter writer(table);
    std::string result = "[";
    for (const VariantList& row : table) {
        if (result.size() > 1) result += ',';
        writer.Append(result, row);
    }
    return result += ']';
}

std::string ToJsonLines(const DataTable& table) {
    RowWriter writer(table);
    std::string result;
    for (const VariantList& row : table) {
        writer.Append(result, row);
        result += '\n';
    }
    return result;
}

DataTable FromJson(std::string_view json) {
    std::string buffer;
    const std::string_view text = WithoutByteOrderMark(ValidUtf8(json, buffer));
    // JSON has it nowhere, but the parser would take it for the end.
    if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos) FailAt(zero + 1);
    DataTable table;
    const std::size_t start = text.find_first_not_of(kWhiteSpace);
    if (start != std::string_view::npos && text[start] == '[') {
        RowReader reader(table, 1, 0);
        nlohmann::json::sax_parse(text, &reader);
    } else {
        ReadLines(table, text);
    }
    return table;
}

}  // namespace quillon
