#include <ostream>
#include <string>
#include <utility>

#include "base/MarkdownText.h"
#include "data/CellAccess.h"
#include "data/DataTableColumns.h"
#include "data/TableSink.h"
#include "quillon/DataTableIO.h"
#include "quillon/LogText.h"

namespace quillon {
namespace {

std::string Shown(const std::string& text) {
    std::string buffer;
    return LogText::OneLine(base::MarkdownText(ValidUtf8(text, buffer)));
}

void Write(TableSink& sink, const DataTable& table) {
    DataTableColumns columns(table);
    const auto& names = columns.ShownNames();
    if (names.empty()) return;
    for (const std::string& name : names) sink.Text() += "| " + Shown(name) + ' ';
    sink.Text() += "|\n";
    for (std::size_t i = 0; i < names.size(); ++i) sink.Text() += "| --- ";
    sink.Text() += "|\n";
    bool good = sink.EndRow();
    for (auto row = table.begin(); good && row != table.end(); ++row) {
        for (const Variant* cell : columns.CellsOf(*row))
            sink.Text() += "| " + (cell == nullptr || cell->IsNull() ? "" : Shown(cell->AsString())) + ' ';
        sink.Text() += "|\n";
        good = sink.EndRow();
    }
}

}  // namespace

std::string ToMarkdown(const DataTable& table) {
    TableSink sink(table.GetNumberOfRows());
    Write(sink, table);
    return std::move(sink.Text());
}

void WriteMarkdown(std::ostream& stream, const DataTable& table) {
    TableSink sink(stream);
    Write(sink, table);
}

}  // namespace quillon
