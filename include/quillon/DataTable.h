#pragma once

#include <functional>
#include <iosfwd>
#include <list>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/VariantList.h"

namespace quillon {

/// The result and parameter table of the agent: rows of named cells and optional
/// column definitions. Rows are free-form; nothing checks them against the
/// columns. A table is undefined until it gets a row or a column. Rows never move:
/// a pointer to one stays valid while others are added. A move leaves the source
/// undefined. One table is used by one thread at a time; concurrent readers use
/// the walks that keep no state in the table.
class QUILLON_API DataTable {
public:
    using const_iterator = std::list<VariantList>::const_iterator;

    DataTable();
    explicit DataTable(const VariantList& r1);
    DataTable(const VariantList& r1, const VariantList& r2);
    DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3);
    DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3, const VariantList& r4);
    DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3, const VariantList& r4,
              const VariantList& r5);
    DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3, const VariantList& r4,
              const VariantList& r5, const VariantList& r6);
    DataTable(const VariantList& r1, const VariantList& r2, const VariantList& r3, const VariantList& r4,
              const VariantList& r5, const VariantList& r6, const VariantList& r7, const VariantList& r8,
              const VariantList& r9, const VariantList& r10);
    DataTable(const DataTable& other);
    DataTable& operator=(const DataTable& other);
    DataTable(DataTable&& other) noexcept;
    DataTable& operator=(DataTable&& other) noexcept;
    ~DataTable() = default;

    // --- Columns ---

    /// False, and no change, when the table has rows. Duplicate names are allowed.
    bool AddNullCol(const std::string& name);
    bool AddStringCol(const std::string& name);
    bool AddLongLongCol(const std::string& name);
    bool AddBoolCol(const std::string& name);
    bool AddDoubleCol(const std::string& name);
    void SetDefaultColumns(const VariantList& columns);
    void SetDefaultColumnNames(const std::vector<std::string>& names);
    bool DefaultColumnsExist() const;
    std::vector<std::string> GetDefaultColumnNames() const;
    /// The column definitions' names, else the first row's.
    std::vector<std::string> GetColumnNames() const;
    /// GetColumnNames() as texts, each named after its column.
    VariantList ColumnNames() const;
    /// The renamed column moves to the end, in the definitions and in every row.
    void RenameColumn(const std::string& oldName, const std::string& newName);

    // --- Rows ---

    void AddRow(const VariantList& row);
    void AddRow(VariantList&& row);
    /// An index past the end changes nothing.
    void RemoveRow(unsigned long long index);
    /// Removes the rows, and with `alsoColumns` the definitions; a defined table stays defined.
    void Clear(bool alsoColumns);
    /// Copies at most `maximum` of the other's rows, not its definitions.
    void Append(const DataTable* other, unsigned int maximum);
    DataTable& operator+=(const DataTable& other);
    /// Moves the other's rows over.
    DataTable& operator+=(DataTable&& other);
    DataTable operator+(const DataTable& other) const;
    bool Empty() const;
    unsigned long long GetNumberOfRows() const;

    /// A walk whose position is kept in the table; null or false at the end.
    VariantList* GetFirstRow() const;
    VariantList* GetNextRow() const;
    bool GetFirstRow(VariantList& row) const;
    bool GetNextRow(VariantList& row) const;
    /// The same with the caller's own position.
    const VariantList* cGetFirstRow(const_iterator& position) const;
    const VariantList* cGetNextRow(const_iterator& position) const;
    /// Calls the function in order until it returns false.
    void EnumerateRows(const std::function<bool(const VariantList&)>& visitor) const;
    const_iterator begin() const;
    const_iterator end() const;

    /// Gives the first row a null cell for every column that only later rows have.
    void RationaliseFirstRow();

    // --- State and comparison ---

    bool IsUndefined() const;
    void MarkAsPromotedFromScalar();
    bool WasPromotedFromScalar() const;
    /// Rows only, position by position; `Similar` rows may order their cells differently.
    bool ContentEqual(const DataTable& other) const;
    bool ContentSimilar(const DataTable& other) const;
    /// Rows and column names. An undefined table and one that was emptied are equal
    /// and also unequal; the same goes for Similar and NotSimilar.
    bool operator==(const DataTable& other) const;
    bool operator!=(const DataTable& other) const;
    bool Similar(const DataTable& other, bool ignoreColumns) const;
    bool NotSimilar(const DataTable& other) const;
    /// Debug lines, indented by up to 40 blanks. A null logger means the registered one,
    /// else standard error.
    void Dump(const char* title, ICLogger* logger, unsigned int indent) const;

private:
    void SetUndefined();
    void SetDefined();
    void MarkChanged();
    bool AddColumn(Variant&& definition);

    VariantList m_columns;
    bool m_rationalised = false;
    mutable std::list<VariantList> m_rows;  // a walk of a const table hands out rows that can be changed
    mutable std::list<VariantList>::iterator m_cursor = m_rows.end();
    bool m_undefined = true;
    bool m_promotedFromScalar = false;
};

/// As ToText() of DataTableIO.h gives it.
QUILLON_API std::ostream& operator<<(std::ostream& stream, const DataTable& table);

}  // namespace quillon
