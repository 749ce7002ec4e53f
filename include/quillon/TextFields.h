#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/TextToDataTableParser.h"

namespace quillon {

/// Reads a field that is parted by blanks (spaces and tabs) on both sides: for columns that are
/// aligned to the right, such as the first one of `ps`.
class QUILLON_API BlankSeparatedField : public IParsableField {
public:
    /// Makes a field, which has no state.
    BlankSeparatedField();
    ~BlankSeparatedField() override;
    /// Skips blanks, appends the characters up to the next blank or the end, and skips the blanks
    /// after them; returns true.
    bool Parse(const char** cursor, std::string& value) override;
};

/// Reads a field of a fixed number of characters, whatever they are: for tables whose cells may be
/// empty or hold blanks.
class QUILLON_API FixedWidthField : public IParsableField {
public:
    /// `width` counts Unicode characters of UTF-8 text; 0 means the rest of the line.
    explicit FixedWidthField(std::size_t width);
    ~FixedWidthField() override;
    /// Appends `width` characters, or those that are left; returns true.
    bool Parse(const char** cursor, std::string& value) override;

private:
    std::size_t m_width;
};

/// Reads a field that ends at a character, such as ',' or '\t', which is skipped.
class QUILLON_API CharSeparatedField : public IParsableField {
public:
    explicit CharSeparatedField(char separator);
    ~CharSeparatedField() override;
    /// Appends the characters up to the separator or the end; returns true.
    bool Parse(const char** cursor, std::string& value) override;

private:
    char m_separator;
};

/// Reads a field of comma-separated values, as `tasklist /fo csv` writes them: in quotes, within
/// which two quotes are one and the separator is text, or without.
class QUILLON_API QuotedField : public IParsableField {
public:
    explicit QuotedField(char separator = ',');
    ~QuotedField() override;
    /// Appends the characters within the quotes and what follows them, up to the separator,
    /// which is skipped, or the end; returns true. A quote that is not closed reaches to the end.
    bool Parse(const char** cursor, std::string& value) override;

private:
    char m_separator;
};

/// A column as the heading of a table shows it.
struct TextColumn {
    std::string name;
    std::size_t width = 0;  ///< characters from its beginning to that of the next one; 0: the rest
};

/// Finds columns that are aligned to the left by their names in a heading (UTF-8). Names are
/// parted by at least `blanks` spaces, so that with 2 a name may hold single ones. What is before
/// the first name belongs to the first column.
QUILLON_API std::vector<TextColumn> ReadTextHeading(const std::string& heading, std::size_t blanks = 1);
/// Finds columns by the line of '=' or '-' below their names, as `tasklist` draws it. The names are
/// trimmed.
QUILLON_API std::vector<TextColumn> ReadTextRuler(const std::string& heading, const std::string& ruler);
/// Adds a column of text of a fixed width for each of `columns`.
///
/// @code
/// TextToDataTableParser parser;
/// AddTextColumns(parser, ReadTextHeading("UNIT      LOAD   DESCRIPTION"));
/// DataTable table;
/// parser.Parse("cron.service loaded Regular jobs\n", table);
/// @endcode
QUILLON_API void AddTextColumns(TextToDataTableParser& parser, const std::vector<TextColumn>& columns);

}  // namespace quillon
