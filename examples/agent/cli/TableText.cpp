#include "cli/TableText.h"

#include <algorithm>

#include "common/ShownText.h"

namespace quillon::agent {

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

}  // namespace quillon::agent
