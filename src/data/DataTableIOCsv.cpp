#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "data/DataTableColumns.h"
#include "quillon/DataTableIO.h"

namespace quillon {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

void AppendField(std::string& output, std::string_view text) {
    std::string buffer;
    const std::string_view valid = ValidUtf8(text, buffer);
    const bool hasMark = WithoutByteOrderMark(valid).size() < valid.size();  // an import would skip it
    if (!valid.empty() && !hasMark && valid.find_first_of(",\"\r\n") == std::string_view::npos) {
        output += valid;
        return;
    }
    output += '"';
    for (const char character : valid) {
        if (character == '"') output += '"';
        output += character;
    }
    output += '"';
}

void AppendCell(std::string& output, const Variant* cell) {
    if (cell == nullptr || cell->IsNull()) return;
    if (cell->TypeIs(typeid(std::string))) {
        AppendField(output, cell->GetStringValue());
    } else if (cell->TypeIs(typeid(double))) {
        AppendDouble(output, cell->GetDoubleValue());
    } else {
        AppendField(output, cell->AsString());
    }
}

struct Field {
    std::string text;
    bool quoted = false;
};

class CsvReader {
public:
    explicit CsvReader(std::string_view text) : m_rest(text) {}

    bool AtEnd() const { return m_rest.empty(); }
    /// Number of the record that was read last, from 1.
    std::size_t Record() const { return m_record; }

    std::vector<Field> ReadRecord() {
        ++m_record;
        std::vector<Field> fields;
        do {
            fields.push_back(m_rest.starts_with('"') ? ReadQuoted() : ReadPlain());
        } while (Skip(","));
        if (!Skip("\n") && !Skip(kLineEnd) && !AtEnd()) Fail("text after a closing quote");
        return fields;
    }

    [[noreturn]] void Fail(const std::string& reason) const {
        throw TableFormatError("CSV record " + std::to_string(m_record) + ": " + reason);
    }

private:
    bool Skip(std::string_view token) {
        if (!m_rest.starts_with(token)) return false;
        m_rest.remove_prefix(token.size());
        return true;
    }

    std::string_view Take(std::size_t length) {
        const std::string_view taken = m_rest.substr(0, length);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

    Field ReadPlain() {
        std::string_view text = Take(m_rest.find_first_of(",\n"));
        if (text.ends_with('\r') && m_rest.starts_with('\n')) text.remove_suffix(1);
        if (text.find('"') != std::string_view::npos) Fail("a quote inside an unquoted field");
        return {std::string(text), false};
    }

    Field ReadQuoted() {
        Field field{{}, true};
        Skip("\"");
        for (;;) {
            const std::size_t quote = m_rest.find('"');
            if (quote == std::string_view::npos) Fail("a quote is not closed");
            field.text += Take(quote);
            if (!Skip("\"\"")) break;
            field.text += '"';
        }
        Skip("\"");
        return field;
    }

    std::string_view m_rest;
    std::size_t m_record = 0;
};

VariantList MakeRow(const std::vector<std::string>& names, std::vector<Field>&& fields) {
    VariantList row;
    row.Reserve(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool null = fields[i].text.empty() && !fields[i].quoted;
        row.Add(null ? Variant::NullVariant(names[i]) : Variant(names[i], std::move(fields[i].text)));
    }
    return row;
}

}  // namespace

std::string ToCsv(const DataTable& table) {
    DataTableColumns columns(table);
    if (columns.Names().empty()) return {};
    std::string result;
    for (const std::string& name : columns.Names()) {
        if (!result.empty()) result += ',';
        AppendField(result, name);
    }
    result += kLineEnd;
    for (const VariantList& row : table) {
        bool first = true;
        for (const Variant* cell : columns.CellsOf(row)) {
            if (!std::exchange(first, false)) result += ',';
            AppendCell(result, cell);
        }
        result += kLineEnd;
    }
    return result;
}

DataTable FromCsv(std::string_view csv) {
    DataTable table;
    std::string buffer;
    CsvReader reader(WithoutByteOrderMark(ValidUtf8(csv, buffer)));
    if (reader.AtEnd()) return table;

    std::vector<std::string> names;
    for (Field& field : reader.ReadRecord()) names.push_back(std::move(field.text));
    table.SetDefaultColumnNames(names);
    while (!reader.AtEnd()) {
        std::vector<Field> fields = reader.ReadRecord();
        if (fields.size() != names.size()) {
            reader.Fail(std::to_string(fields.size()) + " fields instead of " + std::to_string(names.size()));
        }
        table.AddRow(MakeRow(names, std::move(fields)));
    }
    return table;
}

}  // namespace quillon
