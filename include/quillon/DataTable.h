#pragma once

#include <functional>
#include <iosfwd>
#include <list>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/VariantList.h"
#include "quillon/detail/RowMemory.h"

namespace quillon {

namespace detail {
class RowBuilder;
}

/// Keeps the agent's table of results and parameters: rows of named cells (VariantList) and, if
/// wanted, column definitions, whose values tell the columns' types.
///
/// Rows are free-form: nothing checks them against the columns, and a row may lack cells.
/// Column names are compared byte by byte, case-sensitively. A table is undefined until it gets
/// a row or a column, and stays defined when it is emptied; a caller can so tell "no answer"
/// from "no rows". Rows never move in memory: a pointer to one stays valid while others are
/// added, until the row itself is removed. Copies are deep; a move leaves the source undefined.
/// Operations log nothing, Dump() and RationaliseFirstRow() excepted.
///
/// One table is changed by one thread at a time, and not while others read it. Several threads may
/// call the const operations of one table at once, except GetFirstRow() and GetNextRow(), which keep
/// a position in it: cGetFirstRow(), EnumerateRows() and begin() walk without one. A table may be
/// handed to another thread, and copies may be used on different ones.
///
/// @code
/// DataTable table;
/// table.AddStringCol("name");
/// table.AddLongLongCol("bytes");
/// VariantList row;
/// row.Add("name", "agent.log");
/// row.Add("bytes", 2048);
/// table.AddRow(std::move(row));
/// for (const VariantList& each : table) std::cout << each["name"].GetStringValue() << '\n';
/// std::cout << table;  // a heading, a rule and one line a row
/// @endcode
class QUILLON_API DataTable {
    using Rows = std::list<VariantList, detail::RowAllocator<VariantList>>;

public:
    using iterator = Rows::iterator;
    using const_iterator = Rows::const_iterator;

    /// Makes an undefined table: no rows, no columns, not promoted from a scalar.
    DataTable();
    /// Makes a table of copies of one to six or of ten rows, in the order of the arguments.
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
    /// Copies rows, columns and flags; the copy's own walk (GetFirstRow()) is at its end.
    DataTable(const DataTable& other);
    DataTable& operator=(const DataTable& other);
    DataTable(DataTable&& other) noexcept;
    DataTable& operator=(DataTable&& other) noexcept;
    ~DataTable();

    // --- Columns ---

    /// Appends a column of the named type; a null column has none. Returns false, and changes
    /// nothing, when the table has rows already. A name that exists is added a second time.
    bool AddNullCol(const std::string& name);
    bool AddStringCol(const std::string& name);
    bool AddLongLongCol(const std::string& name);
    bool AddBoolCol(const std::string& name);
    bool AddDoubleCol(const std::string& name);
    /// Replaces the column definitions by a copy of the list: each element's name is a column's
    /// name, its kind the type. Rows stay as they are. An undefined table becomes defined when
    /// the list is not empty, and undefined again when such a table loses its columns.
    void SetDefaultColumns(const VariantList& columns);
    /// Replaces the column definitions by one without a type for each name. Rows stay.
    void SetDefaultColumnNames(const std::vector<std::string>& names);
    /// Returns whether there is a column definition.
    bool DefaultColumnsExist() const;
    /// Returns the definitions' names in order; empty when there are none.
    std::vector<std::string> GetDefaultColumnNames() const;
    /// Returns the definitions' names, else the names of the first row's cells, else nothing.
    /// Columns that only later rows have are not among them, see GetAllColumnNames() and
    /// RationaliseFirstRow().
    std::vector<std::string> GetColumnNames() const;
    /// Returns GetColumnNames(), and then the names that only later rows have in order of
    /// appearance, each once. It looks at every cell.
    std::vector<std::string> GetAllColumnNames() const;
    /// Returns GetColumnNames() as texts, each named after its column.
    VariantList ColumnNames() const;
    /// Renames a column in the definitions and in every row, where it moves to the end. A row,
    /// or the definitions, without the old name or with the new one already stay as they are.
    void RenameColumn(const std::string& oldName, const std::string& newName);

    // --- Rows ---

    /// Appends a copy of the row, or the row itself from an rvalue.
    void AddRow(const VariantList& row);
    void AddRow(VariantList&& row);
    /// Removes the row at an index from 0 and ends the walk of GetFirstRow(). An index past the
    /// end changes nothing. The cost grows with the distance to the nearer end.
    void RemoveRow(unsigned long long index);
    /// Removes the rows, and with `alsoColumns` the definitions too. A table that was defined
    /// by a row or an added column stays defined.
    void Clear(bool alsoColumns);
    /// Copies at most `maximum` of the other's rows, in order, to the end; its definitions are
    /// not taken. A null pointer, or a table without rows, changes nothing. `other` may be this
    /// table.
    void Append(const DataTable* other, unsigned int maximum);
    /// Appends copies of all the other's rows.
    DataTable& operator+=(const DataTable& other);
    /// Moves the other's rows to the end without copying one; the other becomes undefined.
    DataTable& operator+=(DataTable&& other);
    /// Returns a copy of this table followed by the other's rows; undefined when both are.
    DataTable operator+(const DataTable& other) const;
    /// Returns whether there are no rows; there may be columns.
    [[nodiscard]] bool Empty() const;
    /// Returns the number of rows; it is kept, not counted.
    [[nodiscard]] unsigned long long GetNumberOfRows() const;
    /// Returns the row at an index from 0; the cost grows with the distance to the nearer end. One
    /// past the end throws std::out_of_range with the text "row 7 out of range".
    [[nodiscard]] const VariantList& GetRow(unsigned long long index) const;
    [[nodiscard]] VariantList& GetRow(unsigned long long index);

    /// Starts a walk over rows that may be changed, or takes its next step; null at the end,
    /// and for GetNextRow() before a first GetFirstRow(). The table keeps the position, so two
    /// walks cannot be nested, nor run on two threads. The table owns the rows.
    VariantList* GetFirstRow() const;
    VariantList* GetNextRow() const;
    /// Takes the same walk, but copies the row into `row`; false, and `row` unchanged, at the
    /// end.
    bool GetFirstRow(VariantList& row) const;
    bool GetNextRow(VariantList& row) const;
    /// Walks with a position that the caller keeps; null at the end. The position stays valid
    /// while rows are added.
    const VariantList* cGetFirstRow(const_iterator& position) const;
    const VariantList* cGetNextRow(const_iterator& position) const;
    /// Calls the visitor with each row in order until it returns false. An empty visitor throws
    /// std::bad_function_call unless there are no rows.
    void EnumerateRows(const std::function<bool(const VariantList&)>& visitor) const;
    /// Returns the range for a `for` loop and for algorithms.
    const_iterator begin() const;
    const_iterator end() const;
    /// Returns the rows for changes.
    iterator begin();
    iterator end();

    /// Sorts the rows by the cells of these columns, the first column first, as
    /// Variant::CompareValues() orders them; a row without the cell stands before all others. Rows
    /// that are equal in all of them keep their order. Pointers to rows stay valid; the walk of
    /// GetFirstRow() ends.
    void SortBy(const std::vector<std::string>& columns);

    /// Adds to the first row a null cell for every column that only other rows have, so that
    /// the first row alone names them all (and GetColumnNames() too, if there are no
    /// definitions): first, by name, the columns of which some cell tells the type, then the
    /// others as texts, by appearance. Other rows stay. A column of time points logs the Error
    /// entry of Variant's placeholder and still gets its cell. The walk of GetFirstRow() then
    /// stands behind the first row.
    void RationaliseFirstRow();

    // --- State and comparison ---

    /// Returns whether nothing was ever put into the table; see the class.
    [[nodiscard]] bool IsUndefined() const;
    /// Marks the table as made from a single value. The mark is only kept and told by
    /// WasPromotedFromScalar(); copies and moves take it along.
    void MarkAsPromotedFromScalar();
    bool WasPromotedFromScalar() const;
    /// Compares rows only, position by position. ContentSimilar() allows the cells of a row to
    /// have another order (VariantList::Similar()).
    [[nodiscard]] bool ContentEqual(const DataTable& other) const;
    [[nodiscard]] bool ContentSimilar(const DataTable& other) const;
    /// Compares rows as ContentEqual() does, and GetColumnNames() in order. An undefined table
    /// and one that was emptied, columns included, are equal and also unequal; the same goes
    /// for Similar() and NotSimilar().
    bool operator==(const DataTable& other) const;
    bool operator!=(const DataTable& other) const;
    /// Compares rows as ContentSimilar() does and, unless `ignoreColumns`, the column names in
    /// any order.
    [[nodiscard]] bool Similar(const DataTable& other, bool ignoreColumns) const;
    /// Returns the opposite of Similar() with columns, except for the pair of tables named
    /// above.
    [[nodiscard]] bool NotSimilar(const DataTable& other) const;
    /// Writes Debug lines: a start line with the number of rows, whether the table is
    /// undefined, the column names, VariantList::Dump() of each row, and an end line. `indent`
    /// is at most 40 blanks. A null logger means the registered one, and standard error when
    /// there is none.
    void Dump(const char* title, ICLogger* logger, unsigned int indent) const;

private:
    friend class detail::RowBuilder;

    void SetUndefined();
    void SetDefined();
    void MarkChanged();
    bool AddColumn(Variant&& definition);
    void AppendCopies(const_iterator row, std::size_t count);
    /// Appends a row that `fill` makes of an empty one.
    template <class Fill>
    void EmplaceRow(Fill fill);
    void FreeRows() noexcept;

    VariantList m_columns;
    bool m_rationalised = false;
    detail::RowMemory m_memory;
    /// A walk of a const table hands out rows that can be changed.
    mutable Rows m_rows{detail::RowAllocator<VariantList>(m_memory)};
    mutable iterator m_cursor = m_rows.end();
    bool m_undefined = true;
    bool m_promotedFromScalar = false;
};

/// Writes the table as ToText() of DataTableIO.h gives it.
QUILLON_API std::ostream& operator<<(std::ostream& stream, const DataTable& table);

/// Shows the first rows of a table with names and kinds in the messages of GoogleTest.
QUILLON_API void PrintTo(const DataTable& table, std::ostream* stream);

}  // namespace quillon
