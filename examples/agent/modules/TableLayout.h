#pragma once

#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/InvocationResult.h"
#include "quillon/TextToDataTableParser.h"

namespace quillon::agent {

/// How the lines of a command's output become rows.
///
/// A layout is written as blank-separated columns "NAME[:TYPE[*FACTOR]][:EXTENT]":
/// TYPE is text (the default), integer, real, boolean or time, FACTOR multiplies a number,
/// EXTENT is blank (the default: between blanks), space (up to the next one), comma, semicolon,
/// tab, quoted (comma-separated values), a number of characters, or rest (of the line; the last
/// column only). "USER PID:integer RSS:integer*1024 COMMAND:text:rest" reads most of `ps`.
/// The layout "*" takes columns of text, aligned to the left, from the first line after those
/// that are skipped; "**" likewise, with names that are at least two blanks apart.
class TableLayout {
public:
    /// Reads a layout. False, with code 2 and a message in the result, when `text` is none.
    bool Read(const std::string& text, InvocationResult& result);

    /// Returns the columns, each as a value of its type, null for a time; none when a heading names them.
    VariantList Definitions() const;
    /// Returns a table with these columns and a row for every line, but the first `skip`.
    DataTable Parse(const std::string& text, long long skip) const;

private:
    enum class Type { Text, Integer, Real, Boolean, Time };
    struct Field {
        std::string name;
        Type type = Type::Text;
        long long factor = 0;  // 0: none
        std::string extent;
        bool isRest = false;
    };

    static std::string ReadType(const std::string& text, Field& field);
    static std::string ReadExtent(const std::string& text, Field& field);
    std::string Add(const std::string& column);
    static Variant DefinitionOf(const Field& field);
    static void AddColumn(const Field& field, TextToDataTableParser& parser);

    std::vector<Field> m_fields;
    std::size_t m_headingBlanks = 0;  // 0: the columns are m_fields
};

}  // namespace quillon::agent
