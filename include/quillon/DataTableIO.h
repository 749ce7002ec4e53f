#pragma once

#include <cstddef>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// Tables as text. Columns are those of GetColumnNames(), followed by the columns that only
/// later rows have, in order of appearance; of several cells of one name in a row the first
/// counts. Output is always valid UTF-8 without a byte-order mark: an invalid sequence becomes
/// U+FFFD, and a name that becomes equal to another one in this way gets a number behind it.
/// Time points are written as ISO 8601 texts, and read back as texts. The process's locale does
/// not matter. Nothing is logged. The functions are thread-safe as long as no other thread
/// changes the table.
///
/// The operations that write to a stream need the memory of one row beside the table, and stop
/// when the stream fails; the caller asks the stream for that.
///
/// @code
/// const DataTable table = FromCsv("name,size\na.log,10\n");
/// std::cout << ToJson(table);  // [{"name":"a.log","size":"10"}]
/// try {
///     FromJson("[1]");
/// } catch (const TableFormatError& error) {
///     std::cout << error.what();  // row 1, line 1, column 2: not an object
/// }
/// @endcode

/// Tells a place in the text that an import was given. All count from 1.
struct TextPlace {
    std::size_t record = 0;  ///< the row of JSON; the record of CSV, whose first is the heading
    std::size_t line = 0;    ///< lines end with LF, CR LF or CR
    std::size_t column = 0;  ///< code points; a byte-order mark is none
    std::size_t byte = 0;    ///< in the whole text, with its byte-order mark
};

/// Reports text that FromJson() or FromCsv() cannot read. The message tells the place and the
/// reason, such as "row 3, line 12, column 8: expected ','" or, of CSV, "record 4, line 4,
/// column 1: a quote is not closed".
class QUILLON_API TableFormatError : public std::runtime_error {
public:
    /// Takes the message that what() returns; the place is unknown, all 0.
    explicit TableFormatError(const std::string& message);
    /// Makes the message of the three; `unit` names what the record counts.
    TableFormatError(const std::string& unit, const TextPlace& place, const std::string& reason);
    TableFormatError(const TableFormatError&) = default;
    TableFormatError& operator=(const TableFormatError&) = default;
    ~TableFormatError() override;

    /// Returns where the text cannot be read.
    const TextPlace& Place() const;
    /// Returns the message without the place; empty when the place is unknown.
    std::string Reason() const;

private:
    TextPlace m_place;
    std::size_t m_reasonLength = 0;  // at the end of the message
};

/// Says how a table is written for people.
struct TextOptions {
    /// The most characters of a line, 0 for any number. The widest columns are cut first.
    std::size_t maxWidth = 0;
    /// Stands for what was cut off.
    std::string ellipsis = "\xE2\x80\xA6";
};

/// Says how CSV is read and written.
struct CsvOptions {
    /// Stands between two fields. It must be ASCII and neither a quote nor a line end, otherwise
    /// std::invalid_argument is thrown.
    char separator = ',';
    /// Reading leaves out lines at the end that hold nothing but white space. Otherwise such a
    /// line is a record with one field. Writing quotes texts of blanks, so that they are kept.
    bool skipTrailingBlankLines = false;
    /// Column definitions, as DataTable::SetDefaultColumns() takes them: reading turns the fields
    /// of a column that is named here into its kind (text, integer, boolean written "true",
    /// "false", "1" or "0", double), and a field that is not of that kind is an error. Other
    /// columns are texts.
    VariantList types;
    /// Writing puts an apostrophe before a text that a spreadsheet program would take for a
    /// formula: one that begins with '=', '+', '-', '@', a tab or a carriage return.
    bool formulaSafe = false;
};

/// Returns the table for people: a heading, a rule of '-' and one line a row, ended by LF, the
/// columns aligned by code points and separated by two blanks; integers and doubles stand to
/// the right. Control characters, and those that turn the direction of writing, are written as
/// JSON escapes such as \n or \u001B, so that no cell can steer a terminal; a backslash before
/// what would then read as an escape is doubled. A null or missing cell is blank. A cell of more
/// than 256 characters moves the rest of its own line, not that of all lines. A table of more than 32
/// columns whose rows have less than a quarter of them on average is written in sections, with an
/// empty line between two: one begins, with its own heading, wherever the columns of a row differ from
/// those of the row before. A table without columns gives the empty text.
[[nodiscard]] QUILLON_API std::string ToText(const DataTable& table);
[[nodiscard]] QUILLON_API std::string ToText(const DataTable& table, const TextOptions& options);
QUILLON_API void WriteText(std::ostream& stream, const DataTable& table, const TextOptions& options = {});
/// Returns an array of objects, one a row, keys in column order, on one line (RFC 8259). Null
/// and missing cells become null, as do the infinities and NaN, for which JSON has no number. A
/// double always has a point or an exponent, so that it is read back as one; it has as many
/// digits as it takes to read back the same value.
[[nodiscard]] QUILLON_API std::string ToJson(const DataTable& table);
QUILLON_API void WriteJson(std::ostream& stream, const DataTable& table);
/// Returns the same objects one a line, each ended by LF, without an array around them; a table
/// without rows gives the empty text.
[[nodiscard]] QUILLON_API std::string ToJsonLines(const DataTable& table);
QUILLON_API void WriteJsonLines(std::ostream& stream, const DataTable& table);
/// Returns a heading line and one line a row, each ended by CR LF (RFC 4180). Null and missing
/// cells become an empty field, the empty text becomes two quotes. Fields with a separator, a
/// quote or a line end are quoted. A table without columns gives the empty text.
[[nodiscard]] QUILLON_API std::string ToCsv(const DataTable& table);
[[nodiscard]] QUILLON_API std::string ToCsv(const DataTable& table, const CsvOptions& options);
QUILLON_API void WriteCsv(std::ostream& stream, const DataTable& table, const CsvOptions& options = {});

/// Returns a table of Markdown (GitHub's tables): a heading, a rule and one line a row, ended by LF. Marks of
/// Markdown and HTML in a text are escaped, so that a reader sees the text as it is and no cell can bring an
/// image or a link of its own; an address of the web becomes a link to what is shown. A line end becomes a
/// break, and other control characters are escaped as LogText::OneLine() does. Null and missing cells are
/// blank. A table without columns gives the empty text.
[[nodiscard]] QUILLON_API std::string ToMarkdown(const DataTable& table);
QUILLON_API void WriteMarkdown(std::ostream& stream, const DataTable& table);

/// Reads an array of objects, or objects of which each begins on a new line, so that JSON Lines
/// and one object on several lines are read too. A byte-order mark is skipped and invalid UTF-8
/// becomes U+FFFD; UTF-16 is refused. Integers become integers (outside the signed 64-bit range,
/// and -0: doubles), other numbers doubles; an array or object as a value becomes its JSON text,
/// whose numbers stand as they were, and may be nested at most 64 deep. A name that an object
/// repeats gives two cells. The table gets no column definitions; a text without objects gives
/// an undefined table. Throws TableFormatError.
[[nodiscard]] QUILLON_API DataTable FromJson(std::string_view json);
/// Reads RFC 4180 text whose first record names the columns, which become definitions without a
/// type. Every field becomes a text, an empty unquoted one null. Records end with CR LF, LF or
/// CR; a byte-order mark is skipped and invalid UTF-8 becomes U+FFFD; UTF-16 is refused. An
/// empty text gives an undefined table. Throws TableFormatError for a record whose number of
/// fields differs, a quote that is not closed or stands inside an unquoted field, and text after
/// a closing quote.
[[nodiscard]] QUILLON_API DataTable FromCsv(std::string_view csv);
/// Reads the same with another separator and with types, which become the definitions of their
/// columns; an empty unquoted field is null in these too.
[[nodiscard]] QUILLON_API DataTable FromCsv(std::string_view csv, const CsvOptions& options);

}  // namespace quillon
