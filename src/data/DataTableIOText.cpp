#include <algorithm>
#include <numeric>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "data/CellAccess.h"
#include "data/DataTableColumns.h"
#include "data/DisplayedText.h"
#include "data/TableSink.h"
#include "quillon/DataTableIO.h"

namespace quillon {
namespace {

constexpr std::size_t kGap = 2;
/// A cell that is wider moves the rest of its own line only: padding all others to it could make the
/// table as large as its widest cell times its rows.
constexpr std::size_t kWidestPadding = 256;
/// A column that is cut keeps this width, so that it stays readable.
constexpr std::size_t kNarrowest = 8;

struct ShownCell {
    std::string text;
    std::size_t width = 0;  // in characters
    bool number = false;
};

ShownCell MakeCell(std::string_view text, bool number) {
    ShownCell cell{Displayed(text), 0, number};
    cell.width = CountCharacters(cell.text);
    return cell;
}

ShownCell MakeCell(const Variant* value) {
    const CellKind kind = value != nullptr ? KindOf(*value) : CellKind::Null;
    if (kind == CellKind::Null) return {};
    if (kind == CellKind::Text) return MakeCell(value->GetStringValue(), false);
    return MakeCell(value->AsString(), kind == CellKind::Integer || kind == CellKind::Double);
}

struct Layout {
    std::size_t width = 0;
    bool hasNumber = false;
    bool hasOther = false;

    void Include(const ShownCell& cell) {
        width = std::max(width, cell.width);
        if (cell.width == 0) return;
        hasNumber = hasNumber || cell.number;
        hasOther = hasOther || !cell.number;
    }
};

/// Lays rows out in one walk and writes them in another, so that it keeps no more than a line. Rows of a
/// ragged table stand under a heading of their own whenever the columns change: in one grid each of them
/// would take as many blanks as all columns before its own are wide.
class TextWriter {
public:
    TextWriter(const DataTable& table, const TextOptions& options) : m_columns(table), m_options(options) {}

    void Write(TableSink& sink, const DataTable& table) {
        if (m_columns.ShownNames().empty()) return;
        if (!m_columns.IsRagged()) {
            m_section.resize(m_columns.ShownNames().size());
            std::iota(m_section.begin(), m_section.end(), std::size_t{0});
            WriteSection(sink, table.begin(), table.end());
            return;
        }
        bool good = true;
        for (auto row = table.begin(); good && row != table.end();) {
            if (row != table.begin()) sink.Text() += '\n';
            const auto first = row;
            row = EndOfSection(first, table.end());
            good = WriteSection(sink, first, row);
        }
    }

private:
    using RowPosition = DataTable::const_iterator;

    /// Takes the columns of a row and returns the first row behind it that has others. Rows without
    /// cells belong to any section.
    RowPosition EndOfSection(RowPosition row, RowPosition end) {
        m_section = m_columns.IndicesOf(*row);
        while (++row != end && (row->Size() == 0 || m_columns.IndicesOf(*row) == m_section)) continue;
        return row;
    }

    bool WriteSection(TableSink& sink, RowPosition first, RowPosition last) {
        LayOut(first, last);
        m_lineStart = sink.Text().size();
        bool good = m_section.empty() || (WriteHeading(sink) && WriteRule(sink));
        for (auto row = first; good && row != last; ++row) {
            std::size_t next = 0;
            VisitCells(*row, [&](std::size_t at, const Variant& cell) {
                PassColumns(next, at);
                Append(sink.Text(), at, MakeCell(&cell));
                next = at + 1;
            });
            good = EndLine(sink);
        }
        return good;
    }

    /// Calls the visitor with each cell and the place of its column in the section.
    template <class Visitor>
    void VisitCells(const VariantList& row, Visitor visitor) {
        std::size_t place = 0;
        m_columns.VisitCells(row, [&](std::size_t column, const Variant& cell) {
            while (m_section[place] != column) ++place;
            visitor(place, cell);
        });
    }

    const std::string& NameAt(std::size_t place) const { return m_columns.ShownNames()[m_section[place]]; }

    void LayOut(RowPosition first, RowPosition last) {
        m_layout.assign(m_section.size(), {});
        for (; first != last; ++first) {
            VisitCells(*first, [this](std::size_t place, const Variant& cell) {
                m_layout[place].Include(MakeCell(&cell));
            });
        }
        for (std::size_t i = 0; i < m_layout.size(); ++i)
            m_layout[i].width = std::max(m_layout[i].width, CountCharacters(Displayed(NameAt(i))));
        if (m_options.maxWidth > 0) {
            Narrow();
        } else {
            for (Layout& column : m_layout) column.width = std::min(column.width, kWidestPadding);
        }
    }

    /// Takes from the widest columns until a line fits, or all are narrow.
    void Narrow() {
        const std::size_t gaps = kGap * (m_layout.size() - std::min<std::size_t>(m_layout.size(), 1));
        const std::size_t room = m_options.maxWidth - std::min(m_options.maxWidth, gaps);
        const auto total = [this](std::size_t most) {
            std::size_t sum = 0;
            for (const Layout& column : m_layout) sum += std::min(column.width, most);
            return sum;
        };
        std::size_t fits = kNarrowest, tooWide = std::max(m_options.maxWidth, kNarrowest) + 1;
        while (tooWide - fits > 1) {
            const std::size_t middle = fits + (tooWide - fits) / 2;
            (total(middle) <= room ? fits : tooWide) = middle;
        }
        for (Layout& column : m_layout) column.width = std::min(column.width, fits);
    }

    bool WriteHeading(TableSink& sink) {
        for (std::size_t i = 0; i < m_layout.size(); ++i) {
            const bool number = m_layout[i].hasNumber && !m_layout[i].hasOther;
            Append(sink.Text(), i, MakeCell(NameAt(i), number));
        }
        return EndLine(sink);
    }

    bool WriteRule(TableSink& sink) {
        for (std::size_t i = 0; i < m_layout.size(); ++i) {
            Append(sink.Text(), i, {std::string(m_layout[i].width, '-'), m_layout[i].width});
        }
        return EndLine(sink);
    }

    void PassColumns(std::size_t from, std::size_t to) {
        for (; from < to; ++from) m_blanks += m_layout[from].width + kGap;
    }

    /// Appends a cell; blanks are put only before a text that follows them.
    void Append(std::string& output, std::size_t column, const ShownCell& cell) {
        const std::size_t most = m_layout[column].width;
        const bool cut = m_options.maxWidth > 0 && cell.width > most;
        const std::size_t width = cut ? most : cell.width;
        const std::size_t padding = most - std::min(most, width);
        if (cell.number) m_blanks += padding;
        if (width > 0) {
            output.append(m_blanks, ' ');
            m_blanks = 0;
            if (cut) {
                AppendCut(output, cell.text, most, m_options.ellipsis);
            } else {
                output += cell.text;
            }
        }
        m_blanks += kGap + (cell.number ? 0 : padding);
    }

    bool EndLine(TableSink& sink) {
        if (m_options.maxWidth > 0) CutLine(sink.Text(), m_lineStart, m_options.maxWidth, m_options.ellipsis);
        sink.Text() += '\n';
        m_blanks = 0;
        const bool good = sink.EndRow();
        m_lineStart = sink.Text().size();
        return good;
    }

    DataTableColumns m_columns;
    const TextOptions& m_options;
    std::vector<std::size_t> m_section;  // the columns that are written, in their order
    std::vector<Layout> m_layout;        // of these columns
    std::size_t m_blanks = 0;            // that wait for a text behind them
    std::size_t m_lineStart = 0;         // in the sink's text
};

}  // namespace

std::string ToText(const DataTable& table) { return ToText(table, {}); }

std::string ToText(const DataTable& table, const TextOptions& options) {
    TableSink sink(table.GetNumberOfRows());
    TextWriter(table, options).Write(sink, table);
    return std::move(sink.Text());
}

void WriteText(std::ostream& stream, const DataTable& table, const TextOptions& options) {
    TableSink sink(stream);
    TextWriter(table, options).Write(sink, table);
}

std::ostream& operator<<(std::ostream& stream, const DataTable& table) {
    WriteText(stream, table);
    return stream;
}

}  // namespace quillon
