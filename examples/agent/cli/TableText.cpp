#include "cli/TableText.h"

#include <algorithm>

#include "common/ShownText.h"

namespace quillon::agent {

namespace {

std::string TextOf(const VariantList& row, const std::string& column) {
    const Variant* const cell = row.Find(column);
    return cell == nullptr || cell->IsNull() ? "" : cell->AsString();
}

std::string ForMarkdown(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\n') {
            escaped += "<br>";
        } else if (c != '\r') {
            if (c == '|' || c == '\\' || c == '<' || c == '`') escaped += '\\';
            escaped += c;
        }
    }
    return TerminalText(escaped);
}

}  // namespace

void WriteLines(std::ostream& stream, const DataTable& table) {
    std::size_t width = 0;
    for (const std::string& name : table.GetAllColumnNames()) width = std::max(width, name.size());
    bool isFirst = true;
    for (const VariantList& row : table) {
        if (!isFirst) stream << '\n';
        isFirst = false;
        for (const Variant& cell : row) {
            const std::string name = TerminalText(cell.GetName());
            stream << std::string(width - std::min(width, name.size()), ' ') << name << " = "
                   << (cell.IsNull() ? "" : TerminalText(cell.AsString())) << '\n';
        }
    }
}

void WriteMarkdown(std::ostream& stream, const DataTable& table) {
    const std::vector<std::string> columns = table.GetAllColumnNames();
    if (columns.empty()) return;
    for (const std::string& name : columns) stream << "| " << ForMarkdown(name) << ' ';
    stream << "|\n";
    for (std::size_t i = 0; i < columns.size(); ++i) stream << "| --- ";
    stream << "|\n";
    for (const VariantList& row : table) {
        for (const std::string& name : columns) stream << "| " << ForMarkdown(TextOf(row, name)) << ' ';
        stream << "|\n";
    }
}

}  // namespace quillon::agent
