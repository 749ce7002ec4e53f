#include "cli/TableText.h"

#include <algorithm>
#include <cstddef>

#include "common/ShownText.h"

namespace quillon::agent {

namespace {

/// A longer name moves its own line only: with the longest one before all lines a table would be as large as
/// that name times its cells.
constexpr std::size_t kWidestPadding = 256;

std::size_t CountCharacters(const std::string& utf8) {
    const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), begins));
}

}  // namespace

void WriteLines(std::ostream& stream, const DataTable& table) {
    std::size_t width = 0;
    for (const std::string& name : table.GetAllColumnNames())
        width = std::max(width, CountCharacters(TerminalText(name)));
    width = std::min(width, kWidestPadding);
    bool isFirst = true;
    for (const VariantList& row : table) {
        if (!isFirst) stream << '\n';
        isFirst = false;
        for (const Variant& cell : row) {
            const std::string name = TerminalText(cell.GetName());
            stream << std::string(width - std::min(width, CountCharacters(name)), ' ') << name << " = "
                   << (cell.IsNull() ? "" : TerminalText(cell.AsString())) << '\n';
        }
    }
}

}  // namespace quillon::agent
