#pragma once

#include <concepts>
#include <memory>
#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/Export.h"
#include "quillon/TimePoint.h"

namespace quillon {

/// Knows how far one column extends on a line. Derive from it for columns that neither the two
/// fields below nor those of TextFields.h read; the parser calls it on the thread that parses.
class QUILLON_API IParsableField {
public:
    /// Makes a field without state; the parser that it is given to deletes it.
    IParsableField();
    virtual ~IParsableField();
    /// Appends one field, which starts at `*cursor` in a NUL-terminated line without its line
    /// feed, to `value`, and moves the cursor to where the next field starts, at most to the
    /// NUL. The result is not looked at.
    virtual bool Parse(const char** cursor, std::string& value) = 0;
};

/// Reads a field that ends at the next space (not at a tab); the spaces after it are skipped. A
/// line that begins with spaces gives an empty first field.
class QUILLON_API SpaceSeparatedField : public IParsableField {
public:
    /// Makes a field, which has no state: one object may parse lines on several threads.
    SpaceSeparatedField();
    ~SpaceSeparatedField() override;
    /// Appends the characters up to a space or the end, and skips the spaces; returns true.
    bool Parse(const char** cursor, std::string& value) override;
};

/// Reads the rest of the line: for a last column that may contain spaces. Every field that
/// follows is empty.
class QUILLON_API NullSeparatedField : public IParsableField {
public:
    /// Makes a field, which has no state either.
    NullSeparatedField();
    ~NullSeparatedField() override;
    /// Appends the characters up to the end; returns true.
    bool Parse(const char** cursor, std::string& value) override;
};

/// The types of columns that a text can be parsed into.
template <class T>
concept ParsableColumn = std::same_as<T, std::string> || std::same_as<T, long long> ||
    std::same_as<T, bool> || std::same_as<T, double> || std::same_as<T, TimePoint>;

/// Turns column-oriented text, one record a line, into rows of a table, as for the output of a
/// console program. Declare the columns in order, then parse any number of texts.
///
/// Declaring is for one thread; afterwards several threads may parse at once, each into a table
/// of its own, if fields of the caller's own allow it. Nothing is logged.
///
/// @code
/// TextToDataTableParser parser;
/// parser.AddField<std::string>("name", std::make_unique<SpaceSeparatedField>());
/// parser.AddField<long long>("bytes", std::make_unique<SpaceSeparatedField>(), 1024);  // kibibytes
/// parser.AddField<std::string>("note", std::make_unique<NullSeparatedField>());
/// DataTable table;
/// parser.Parse("a.log  12 rolled over\nb.log 3\n", table);
/// std::cout << table.GetNumberOfRows() << '\n';  // 2; the second row has no "note"
/// @endcode
class QUILLON_API TextToDataTableParser {
public:
    /// Makes a parser without columns; it deletes its fields when it ends, and cannot be
    /// copied.
    TextToDataTableParser();
    ~TextToDataTableParser();
    TextToDataTableParser(const TextToDataTableParser&) = delete;
    TextToDataTableParser& operator=(const TextToDataTableParser&) = delete;

    /// Adds a column. T is std::string; long long, a decimal number with an optional sign, 0
    /// without digits, times `multiplier` unless that is 0, held at the range's end when it is
    /// too large; bool, true for "1" and for "true" in any case; double, likewise multiplied, but
    /// infinite when it is too large; or TimePoint, a date such as "2026-11-25" or "2026-11-25
    /// 18:03:57.5 +0100", in UTC without a zone, where any other text gives no cell. Takes
    /// ownership of `field`, also when it throws; a null one throws std::invalid_argument.
    template <ParsableColumn T>
    void AddField(const std::string& name, IParsableField* field, long long multiplier) {
        AddOwnedField<T>(name, field, multiplier);
    }
    /// Does the same with a field whose ownership the signature shows.
    template <ParsableColumn T>
    void AddField(const std::string& name, std::unique_ptr<IParsableField> field, long long multiplier = 0) {
        AddField<T>(name, field.release(), multiplier);
    }
    // What the compiler says of any other type.
    template <class T, class Field>
    requires(!ParsableColumn<T>) void AddField(const std::string&, Field&&, long long = 0) {
        static_assert(ParsableColumn<T>,
                      "A column is of the type std::string, long long, double, bool or TimePoint");
    }

    /// Appends a row for every line that yields a value; lines end at LF, and a CR before it is
    /// white space. White space at the ends of a field is removed, and a field of nothing else
    /// gives no cell, so that rows may have fewer cells than there are columns. A text without
    /// lines leaves the table alone.
    void Parse(const std::string& text, DataTable& table) const;

private:
    template <class T>
    void AddOwnedField(const std::string& name, IParsableField* field,
                       long long multiplier);  // exported, and so without constraints
    class LineReader;
    enum class Reach { ToSpace, ToLineEnd, Own };
    enum class Type { Text, Integer, Boolean, Real, Time };
    struct Column {
        std::string name;
        std::unique_ptr<IParsableField> field;
        Reach reach;  ///< Own: only the field itself knows
        Type type;
        long long multiplier;  ///< 0: none
    };

    void AddColumn(const std::string& name, IParsableField* field, Type type, long long multiplier);

    std::vector<Column> m_columns;
    bool m_hasOwnFields = false;
};

}  // namespace quillon
