#include <algorithm>
#include <ostream>
#include <string>
#include <typeinfo>
#include <vector>

#include "data/ControlEscape.h"
#include "data/DataTableColumns.h"
#include "quillon/DataTableIO.h"

namespace quillon {
namespace {

constexpr std::size_t kGap = 2;

struct TextCell {
    std::string text;
    std::size_t width = 0;  // in characters
    bool number = false;
};

bool IsContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

std::size_t CountCharacters(std::string_view utf8) {
    return utf8.size() -
           static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), IsContinuationByte));
}

/// Control characters, those of U+0080 to U+009F included, steer terminals.
std::string Displayed(std::string_view text) {
    std::string buffer, result;
    const std::string_view valid = ValidUtf8(text, buffer);
    result.reserve(valid.size());
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const auto byte = static_cast<unsigned char>(valid[i]);
        const bool twoByteControl = byte == 0xC2 && static_cast<unsigned char>(valid[i + 1]) < 0xA0;
        if (twoByteControl) {
            AppendControlEscape(result, static_cast<unsigned char>(valid[++i]));
        } else if (byte < 0x20 || byte == 0x7F) {
            AppendControlEscape(result, byte);
        } else {
            result += valid[i];
        }
    }
    return result;
}

TextCell MakeCell(std::string_view text, bool number) {
    TextCell cell{Displayed(text), 0, number};
    cell.width = CountCharacters(cell.text);
    return cell;
}

TextCell MakeCell(const Variant* value) {
    if (value == nullptr || value->IsNull()) return {};
    const bool number = value->TypeIs(typeid(long long)) || value->TypeIs(typeid(double));
    return MakeCell(value->AsString(), number);
}

struct Layout {
    std::size_t width = 0;
    bool hasNumber = false;
    bool hasOther = false;

    void Include(const TextCell& cell) {
        width = std::max(width, cell.width);
        if (cell.width == 0) return;
        hasNumber = hasNumber || cell.number;
        hasOther = hasOther || !cell.number;
    }
};

/// Appends one line; blanks are put only before a text that follows them.
void AppendLine(std::string& output, const TextCell* cells, const std::vector<Layout>& layout) {
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < layout.size(); ++i) {
        const std::size_t padding = layout[i].width - cells[i].width;
        if (cells[i].number) blanks += padding;
        if (!cells[i].text.empty()) {
            output.append(blanks, ' ').append(cells[i].text);
            blanks = 0;
        }
        blanks += kGap + (cells[i].number ? 0 : padding);
    }
    output += '\n';
}

}  // namespace

std::string ToText(const DataTable& table) {
    DataTableColumns columns(table);
    const std::size_t count = columns.Names().size();
    if (count == 0) return {};

    std::vector<Layout> layout(count);
    std::vector<TextCell> cells;  // of all rows
    cells.reserve(count * table.GetNumberOfRows());
    for (const VariantList& row : table) {
        for (const Variant* value : columns.CellsOf(row)) {
            layout[cells.size() % count].Include(cells.emplace_back(MakeCell(value)));
        }
    }

    std::vector<TextCell> heading, rule;
    for (std::size_t i = 0; i < count; ++i) {
        heading.push_back(MakeCell(columns.Names()[i], layout[i].hasNumber && !layout[i].hasOther));
        layout[i].width = std::max(layout[i].width, heading[i].width);
        rule.push_back(MakeCell(std::string(layout[i].width, '-'), false));
    }

    std::string result;
    AppendLine(result, heading.data(), layout);
    AppendLine(result, rule.data(), layout);
    for (std::size_t start = 0; start < cells.size(); start += count) {
        AppendLine(result, &cells[start], layout);
    }
    return result;
}

std::ostream& operator<<(std::ostream& stream, const DataTable& table) { return stream << ToText(table); }

}  // namespace quillon
