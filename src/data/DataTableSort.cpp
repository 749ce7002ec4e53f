#include <algorithm>
#include <bit>
#include <cmath>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "data/CellAccess.h"
#include "quillon/DataTable.h"

namespace quillon {
namespace {

std::uint64_t NumberMark(double value) {
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    if (std::isnan(value)) return ~std::uint64_t{0};
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);  // both zeros have one mark
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

/// Tells of the bytes behind a prefix that all texts have.
std::uint64_t TextMark(const std::string& text, std::size_t prefix) {
    std::uint64_t mark = 0;
    for (std::size_t i = prefix; i < prefix + sizeof(mark); ++i)
        mark = mark << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
    return mark;
}

std::uint64_t ValueMark(const Variant& cell, std::size_t prefix) {
    switch (KindOf(cell)) {
        case CellKind::Null:
            break;
        case CellKind::Text:
            return TextMark(cell.GetStringValue(), prefix);
        case CellKind::Integer:
            return NumberMark(static_cast<double>(cell.GetLongLongValue()));
        case CellKind::Boolean:
            return cell.GetBoolValue() ? ~std::uint64_t{0} : 0;
        case CellKind::Double:
            return NumberMark(cell.GetDoubleValue());
        case CellKind::Time:
            return static_cast<std::uint64_t>(cell.GetTimePoint().time_since_epoch().count()) ^
                   std::uint64_t{1} << 63;
    }
    return 0;
}

/// Of two cells whose marks differ the one with the lesser mark stands first. A missing cell has the least.
std::uint64_t MarkOf(const Variant* cell, std::size_t prefix) {
    constexpr unsigned kOrderBits = 3;
    if (cell == nullptr) return 0;
    const auto order = static_cast<std::uint64_t>(OrderOf(KindOf(*cell))) + 1;
    return order << (64 - kOrderBits) | ValueMark(*cell, prefix) >> kOrderBits;
}

/// A row as it is sorted by a column. To look for the cell, and to read it, at each comparison would cost
/// more than the comparison.
struct SortedRow {
    DataTable::iterator row;
    std::size_t place;  ///< in the table as it was, which decides between equal rows
    const Variant* cell = nullptr;
    std::uint64_t mark = 0;
};

std::weak_ordering Compare(const SortedRow& left, const SortedRow& right) {
    if (left.mark != right.mark || left.cell == nullptr) return left.mark <=> right.mark;
    return left.cell->CompareValues(*right.cell);
}

/// Equal rows keep their order.
bool StandsBefore(const SortedRow& left, const SortedRow& right) {
    const std::weak_ordering order = Compare(left, right);
    return order != 0 ? order < 0 : left.place < right.place;
}

/// Returns how many bytes at the front of all texts are the same.
std::size_t CommonPrefix(std::span<const SortedRow> rows) {
    const std::string* first = nullptr;
    std::size_t length = 0;
    for (const SortedRow& row : rows) {
        if (row.cell == nullptr || KindOf(*row.cell) != CellKind::Text) continue;
        const std::string& text = row.cell->GetStringValue();
        if (first == nullptr) length = (first = &text)->size();
        length = std::min(length, text.size());
        length = static_cast<std::size_t>(
            std::mismatch(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length), first->begin())
                .first -
            text.begin());
    }
    return length;
}

/// Sorts by the first column, and rows that are equal in it by the others.
void Sort(std::span<SortedRow> rows, std::span<const std::string> columns) {
    if (rows.size() < 2 || columns.empty()) return;
    for (SortedRow& row : rows) row.cell = std::as_const(*row.row).Find(columns.front());
    const std::size_t prefix = CommonPrefix(rows);
    for (SortedRow& row : rows) row.mark = MarkOf(row.cell, prefix);
    std::sort(rows.begin(), rows.end(), &StandsBefore);
    if (columns.size() == 1) return;
    for (auto first = rows.begin(); first != rows.end();) {
        const auto last = std::find_if(first, rows.end(),
                                       [&first](const SortedRow& row) { return Compare(*first, row) != 0; });
        Sort({first, last}, columns.subspan(1));
        first = last;
    }
}

}  // namespace

void DataTable::SortBy(const std::vector<std::string>& columns) {
    std::vector<SortedRow> sorted;
    sorted.reserve(m_rows.size());
    for (auto row = m_rows.begin(); row != m_rows.end(); ++row) sorted.push_back({row, sorted.size()});
    Sort(sorted, columns);
    for (const SortedRow& moved : sorted) m_rows.splice(m_rows.end(), m_rows, moved.row);
    m_cursor = m_rows.end();
    m_rationalised = false;
}

}  // namespace quillon
