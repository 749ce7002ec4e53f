#include "quillon/DataTable.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "data/CellAccess.h"
#include "data/DataTableColumns.h"
#include "data/DumpWriter.h"
#include "data/FreedMemory.h"
#include "data/HeldName.h"
#include "data/NameCache.h"
#include "data/NameRuns.h"

namespace quillon {
namespace {

/// The bytes of a row beside its cells: its place in the list and what the heap adds.
constexpr std::size_t kRowOverhead = 64;
constexpr unsigned int kAllRows = std::numeric_limits<unsigned int>::max();

std::vector<std::string> NamesOf(const VariantList& cells) {
    std::vector<std::string> names;
    names.reserve(cells.Size());
    for (const Variant& cell : cells) names.push_back(cell.GetName());
    return names;
}

/// Moves the cell to the end under its new name, unless that name is taken.
void RenameCell(VariantList& cells, const std::string& oldName, const std::string& newName,
                HeldName& heldName) noexcept {
    Variant* const cell = cells.Find(oldName);
    if (cell != nullptr && !cells.Contains(newName)) CellAccess::RenameToEnd(cells, cell, heldName);
}

/// Collects the names and types of columns from the cells of all rows. The names are those of the cells
/// themselves.
struct ColumnTypes {
    std::map<std::string_view, const std::type_info*> typed;
    std::vector<std::string_view> untyped;  // in order of appearance
};

template <class Rows>
ColumnTypes FindColumnTypes(const Rows& rows) {
    ColumnTypes found;
    std::set<std::string_view> seenUntyped;
    for (const VariantList& row : rows) {
        for (const Variant& cell : row) {
            const std::string_view name = cell.GetName();
            if (found.typed.contains(name)) continue;
            if (!cell.IsNull()) {
                found.typed.emplace(name, &cell.GetType());
            } else if (seenUntyped.insert(name).second) {
                found.untyped.push_back(name);
            }
        }
    }
    return found;
}

/// Walks from the nearer end.
template <class Rows>
auto RowAt(Rows& rows, unsigned long long index) {
    const bool fromEnd = index > rows.size() / 2;
    const auto steps = static_cast<std::ptrdiff_t>(fromEnd ? index - rows.size() : index);
    return std::next(fromEnd ? rows.end() : rows.begin(), steps);
}

}  // namespace

DataTable::DataTable() = default;
DataTable::DataTable(const VariantList& r1) { AddRow(r1); }
DataTable::DataTable(const VariantList& r1, const VariantList& r2) : DataTable(r1) { AddRow(r2); }
DataTable::DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3)
    : DataTable(r1, r2) {
    AddRow(r3);
}
DataTable::DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3,
                     const VariantList& r4)
    : DataTable(r1, r2, r3) {
    AddRow(r4);
}
DataTable::DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3,
                     const VariantList& r4, const VariantList& r5)
    : DataTable(r1, r2, r3, r4) {
    AddRow(r5);
}
DataTable::DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3,
                     const VariantList& r4, const VariantList& r5, const VariantList& r6)
    : DataTable(r1, r2, r3, r4, r5) {
    AddRow(r6);
}
DataTable::DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3,
                     const VariantList& r4, const VariantList& r5, const VariantList& r6,
                     const VariantList& r7, const VariantList& r8, const VariantList& r9,
                     const VariantList& r10)
    : DataTable(r1, r2, r3, r4, r5, r6) {
    AddRow(r7);
    AddRow(r8);
    AddRow(r9);
    AddRow(r10);
}

DataTable::DataTable(const DataTable& other)
    : m_columns(other.m_columns),
      m_rationalised(other.m_rationalised),
      m_undefined(other.m_undefined),
      m_promotedFromScalar(other.m_promotedFromScalar) {
    AppendCopies(other.begin(), other.m_rows.size());
}

DataTable::~DataTable() { FreeRows(); }

DataTable& DataTable::operator=(const DataTable& other) {
    if (this != &other) *this = DataTable(other);
    return *this;
}

DataTable::DataTable(DataTable&& other) noexcept { *this = std::move(other); }

DataTable& DataTable::operator=(DataTable&& other) noexcept {
    if (this == &other) return *this;
    m_columns = std::move(other.m_columns);
    m_rationalised = std::exchange(other.m_rationalised, false);
    FreeRows();
    m_memory.TakeOver(other.m_memory);
    m_rows.splice(m_rows.end(), other.m_rows);
    m_cursor = m_rows.end();
    other.m_cursor = other.m_rows.end();
    m_undefined = std::exchange(other.m_undefined, true);
    m_promotedFromScalar = std::exchange(other.m_promotedFromScalar, false);
    return *this;
}

// --- Columns ---

bool DataTable::AddNullCol(const std::string& name) { return AddColumn(Variant::NullVariant(name)); }
bool DataTable::AddStringCol(const std::string& name) { return AddColumn(Variant(name, "")); }
bool DataTable::AddLongLongCol(const std::string& name) { return AddColumn(Variant(name, 0)); }
bool DataTable::AddBoolCol(const std::string& name) { return AddColumn(Variant(name, false)); }
bool DataTable::AddDoubleCol(const std::string& name) { return AddColumn(Variant(name, 0.0)); }

bool DataTable::AddColumn(Variant&& definition) {
    if (!Empty()) return false;
    m_columns.Add(std::move(definition));
    MarkChanged();
    return true;
}

void DataTable::SetDefaultColumns(const VariantList& columns) { m_columns = columns; }

void DataTable::SetDefaultColumnNames(const std::vector<std::string>& names) {
    VariantList columns;
    for (const std::string& name : names) columns.Add(Variant::NullVariant(name));
    m_columns = std::move(columns);
    m_rationalised = false;
    if (!names.empty()) SetDefined();
}

bool DataTable::DefaultColumnsExist() const { return m_columns.Size() != 0; }
std::vector<std::string> DataTable::GetDefaultColumnNames() const { return NamesOf(m_columns); }

std::vector<std::string> DataTable::GetColumnNames() const {
    if (DefaultColumnsExist() || Empty()) return NamesOf(m_columns);
    return NamesOf(m_rows.front());
}

std::vector<std::string> DataTable::GetAllColumnNames() const { return DataTableColumns(*this).Names(); }

VariantList DataTable::ColumnNames() const {
    VariantList result;
    for (const std::string& name : GetColumnNames()) result.Add(name, name);
    return result;
}

void DataTable::RenameColumn(const std::string& oldName, const std::string& newName) {
    if (IsUndefined()) return;
    // The caller's names may be those of the cells that are about to go.
    const std::string from = oldName, to = newName;
    HeldName held(to);  // the last memory that is needed: no row stays behind
    RenameCell(m_columns, from, to, held);
    for (VariantList& row : m_rows) RenameCell(row, from, to, held);
    m_rationalised = false;
}

// --- Rows ---

template <class Fill>
void DataTable::EmplaceRow(Fill fill) {
    VariantList& row = m_rows.emplace_back();
    try {
        fill(row);
    } catch (...) {
        m_rows.pop_back();
        throw;
    }
}

void DataTable::AddRow(const VariantList& row) {
    EmplaceRow([&](VariantList& made) { CellAccess::CopyTo(made, row, m_memory); });
    MarkChanged();
}

void DataTable::AddRow(VariantList&& row) {
    SetUsualRowSize(row.Size());
    EmplaceRow([&](VariantList& made) { CellAccess::MoveTo(made, row, m_memory); });
    MarkChanged();
}

void DataTable::RemoveRow(unsigned long long index) {
    if (index >= m_rows.size()) return;
    m_rows.erase(RowAt(m_rows, index));
    m_memory.Settle();
    m_cursor = m_rows.end();
    m_rationalised = false;
}

void DataTable::Clear(bool alsoColumns) {
    FreeRows();
    m_cursor = m_rows.end();
    if (alsoColumns) m_columns.Clear();
    m_rationalised = false;
}

void DataTable::Append(const DataTable* other, unsigned int maximum) {
    if (other == nullptr) return;
    // Counted beforehand: the other table may be this one.
    const auto count = std::min<std::size_t>(other->m_rows.size(), maximum);
    if (count == 0) return;
    AppendCopies(other->begin(), count);
    MarkChanged();
}

void DataTable::AppendCopies(const_iterator row, std::size_t count) {
    const std::size_t before = m_rows.size();
    try {
        NameRuns runs;
        for (; count > 0; --count, ++row) {
            EmplaceRow([&](VariantList& made) { runs.Copy(*row, made, m_memory); });
        }
    } catch (...) {
        while (m_rows.size() > before) m_rows.pop_back();
        throw;
    }
}

void DataTable::FreeRows() noexcept {
    if (m_rows.empty()) return;
    std::size_t bytes = 0;
    {
        NameRuns runs;
        for (; !m_rows.empty(); m_rows.pop_front())
            bytes += kRowOverhead + runs.Free(m_rows.front(), m_memory);
    }
    m_memory.Reset();
    CountFreedMemory(bytes);
}

DataTable& DataTable::operator+=(const DataTable& other) {
    Append(&other, kAllRows);
    m_rationalised = false;
    return *this;
}

DataTable& DataTable::operator+=(DataTable&& other) {
    if (this == &other) return *this += std::as_const(other);
    if (!other.Empty()) MarkChanged();
    m_rows.splice(m_rows.end(), other.m_rows);
    m_rationalised = false;
    other = DataTable();
    return *this;
}

DataTable DataTable::operator+(const DataTable& other) const {
    if (IsUndefined() && other.IsUndefined()) return DataTable();
    DataTable result = *this;
    result.Append(&other, kAllRows);
    return result;
}

bool DataTable::Empty() const { return m_rows.empty(); }
unsigned long long DataTable::GetNumberOfRows() const { return m_rows.size(); }

VariantList* DataTable::GetFirstRow() const {
    m_cursor = m_rows.begin();
    return GetNextRow();
}

VariantList* DataTable::GetNextRow() const { return m_cursor != m_rows.end() ? &*m_cursor++ : nullptr; }

bool DataTable::GetFirstRow(VariantList& row) const {
    const VariantList* first = GetFirstRow();
    if (first != nullptr) row = *first;
    return first != nullptr;
}

bool DataTable::GetNextRow(VariantList& row) const {
    const VariantList* next = GetNextRow();
    if (next != nullptr) row = *next;
    return next != nullptr;
}

const VariantList* DataTable::cGetFirstRow(const_iterator& position) const {
    position = begin();
    return cGetNextRow(position);
}

const VariantList* DataTable::cGetNextRow(const_iterator& position) const {
    return position != end() ? &*position++ : nullptr;
}

void DataTable::EnumerateRows(const std::function<bool(const VariantList&)>& visitor) const {
    for (const VariantList& row : std::as_const(m_rows)) {
        if (!visitor(row)) return;
    }
}

DataTable::const_iterator DataTable::begin() const { return m_rows.cbegin(); }
DataTable::const_iterator DataTable::end() const { return m_rows.cend(); }

DataTable::iterator DataTable::begin() { return m_rows.begin(); }
DataTable::iterator DataTable::end() { return m_rows.end(); }

const VariantList& DataTable::GetRow(unsigned long long index) const {
    if (index >= m_rows.size()) throw std::out_of_range("row " + std::to_string(index) + " out of range");
    return *RowAt(m_rows, index);
}

VariantList& DataTable::GetRow(unsigned long long index) {
    return const_cast<VariantList&>(std::as_const(*this).GetRow(index));
}

void PrintTo(const DataTable& table, std::ostream* stream) {
    constexpr unsigned long long kMostRows = 10;
    unsigned long long shown = 0;
    *stream << std::to_string(table.GetNumberOfRows())
            << (table.IsUndefined() ? " rows, undefined" : " rows");
    for (auto row = table.begin(); row != table.end() && shown < kMostRows; ++row, ++shown) {
        *stream << '\n';
        PrintTo(*row, stream);
    }
    if (shown < table.GetNumberOfRows()) *stream << "\n...";
}

void DataTable::RationaliseFirstRow() {
    if (IsUndefined() || m_rationalised) return;
    if (m_rows.size() >= 2) {
        const ColumnTypes columns = FindColumnTypes(m_rows);
        VariantList& first = *GetFirstRow();
        std::set<std::string_view> present;
        for (const Variant& cell : std::as_const(first)) present.insert(cell.GetName());
        const auto addMissing = [&](std::string_view name, const std::type_info& type) {
            if (present.insert(name).second) first.AddEmptyCell(std::string(name), type);
        };
        for (const auto& [name, type] : columns.typed) addMissing(name, *type);
        for (const auto name : columns.untyped) addMissing(name, typeid(std::string));
    }
    m_rationalised = true;
}

// --- State ---

bool DataTable::IsUndefined() const { return m_undefined && Empty() && !DefaultColumnsExist(); }

void DataTable::SetUndefined() {
    Clear(false);
    m_undefined = true;
}

void DataTable::SetDefined() { m_undefined = false; }

void DataTable::MarkChanged() {
    SetDefined();
    m_rationalised = false;
}

void DataTable::MarkAsPromotedFromScalar() { m_promotedFromScalar = true; }
bool DataTable::WasPromotedFromScalar() const { return m_promotedFromScalar; }

void DataTable::Dump(const char* title, ICLogger* logger, unsigned int indent) const {
    ICLogger* const target = LoggerOrRegistered(logger);
    const std::string prefix = DumpIndent(indent), inner = DumpIndent(InnerIndent(indent));
    const std::string shownTitle = title != nullptr ? title : "";
    WriteDumpLine(target, prefix + "Start of DataTable dump with " + std::to_string(GetNumberOfRows()) +
                              " row(s): " + shownTitle);
    WriteDumpLine(target, inner + "IsUndefined == " + (IsUndefined() ? "true" : "false"));
    WriteDumpLine(target, inner + "Column names: " + ColumnNames().ToString(", ", nullptr));
    for (const VariantList& row : std::as_const(m_rows))
        row.Dump("DataTable row", target, InnerIndent(indent));
    WriteDumpLine(target, prefix + "End of DataTable dump: " + shownTitle);
}

}  // namespace quillon
