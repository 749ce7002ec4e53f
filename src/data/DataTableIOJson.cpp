#include <cmath>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "data/CellAccess.h"
#include "data/DataTableColumns.h"
#include "data/JsonReader.h"
#include "data/JsonText.h"
#include "data/TableSink.h"
#include "quillon/DataTableIO.h"

namespace quillon {
namespace {

void AppendNumber(std::string& output, double value) {
    if (std::isfinite(value)) {
        AppendDouble(output, value);
    } else {
        output += "null";
    }
}

void AppendValue(std::string& output, const Variant& cell) {
    switch (KindOf(cell)) {
        case CellKind::Null:
            output += "null";
            break;
        case CellKind::Text:
            AppendJsonString(output, cell.GetStringValue());
            break;
        case CellKind::Integer:
            AppendInteger(output, cell.GetLongLongValue());
            break;
        case CellKind::Boolean:
            output += cell.GetBoolValue() ? "true" : "false";
            break;
        case CellKind::Double:
            AppendNumber(output, cell.GetDoubleValue());
            break;
        case CellKind::Time:
            AppendJsonString(output, cell.AsString());
            break;
    }
}

/// Writes rows as objects; the names are escaped once.
class RowWriter {
public:
    explicit RowWriter(const DataTable& table) : m_columns(table) {
        for (const std::string& name : m_columns.ShownNames()) {
            std::string& key = m_keys.emplace_back(m_keys.empty() ? "" : ",");
            AppendJsonString(key, name);
            key += ':';
        }
    }

    void Append(std::string& output, const VariantList& row) {
        output += '{';
        auto key = m_keys.begin();
        for (const Variant* cell : m_columns.CellsOf(row)) {
            output += *key++;
            if (cell != nullptr) {
                AppendValue(output, *cell);
            } else {
                output += "null";
            }
        }
        output += '}';
    }

private:
    DataTableColumns m_columns;
    std::vector<std::string> m_keys;
};

void WriteArray(TableSink& sink, const DataTable& table) {
    RowWriter writer(table);
    bool good = true;
    char before = '[';
    for (auto row = table.begin(); good && row != table.end(); ++row) {
        sink.Text() += before;
        writer.Append(sink.Text(), *row);
        before = ',';
        good = sink.EndRow();
    }
    if (!good) return;
    sink.Text() += table.Empty() ? "[]" : "]";
    sink.EndRow();
}

void WriteObjects(TableSink& sink, const DataTable& table) {
    RowWriter writer(table);
    for (const VariantList& row : table) {
        writer.Append(sink.Text(), row);
        sink.Text() += '\n';
        if (!sink.EndRow()) return;
    }
}

}  // namespace

std::string ToJson(const DataTable& table) {
    TableSink sink(table.GetNumberOfRows());
    WriteArray(sink, table);
    return std::move(sink.Text());
}

void WriteJson(std::ostream& stream, const DataTable& table) {
    TableSink sink(stream);
    WriteArray(sink, table);
}

std::string ToJsonLines(const DataTable& table) {
    TableSink sink(table.GetNumberOfRows());
    WriteObjects(sink, table);
    return std::move(sink.Text());
}

void WriteJsonLines(std::ostream& stream, const DataTable& table) {
    TableSink sink(stream);
    WriteObjects(sink, table);
}

DataTable FromJson(std::string_view json) {
    DataTable table;
    JsonReader(json, table).Read();
    return table;
}

}  // namespace quillon
