#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// Tables as text. Columns are those of GetColumnNames(), followed by the columns that only
/// later rows have, in order of appearance; of several cells of one name in a row the first
/// counts. Output is always valid UTF-8 without a byte-order mark: an invalid sequence becomes
/// U+FFFD. Time points are written as ISO 8601 texts, and read back as texts. Nothing is
/// logged. The functions are thread-safe as long as no other thread changes the table.
///
/// @code
/// const DataTable table = FromCsv("name,size\na.log,10\n");
/// std::cout << ToJson(table);  // [{"name":"a.log","size":"10"}]
/// try {
///     FromJson("[1]");
/// } catch (const TableFormatError& error) {
///     std::cout << error.what();  // JSON row 1: not an object
/// }
/// @endcode

/// Reports text that FromJson() or FromCsv() cannot read. The message tells the place and the
/// reason, such as "JSON: cannot be read at byte 12", "JSON row 3: not an object" or "CSV
/// record 4: a quote is not closed"; bytes, rows and records count from 1.
class QUILLON_API TableFormatError : public std::runtime_error {
public:
    /// Takes the message that what() returns.
    explicit TableFormatError(const std::string& message);
    TableFormatError(const TableFormatError&) = default;
    TableFormatError& operator=(const TableFormatError&) = default;
    ~TableFormatError() override;
};

/// Returns the table for people: a heading, a rule of '-' and one line a row, ended by LF, the
/// columns aligned by code points and separated by two blanks; integers and doubles stand to
/// the right. Control characters inside a cell are written as JSON escapes such as \n or
/// \u001B, so that no cell can steer a terminal. A null or missing cell is blank. A table
/// without columns gives the empty text.
QUILLON_API std::string ToText(const DataTable& table);
/// Returns an array of objects, one a row, keys in column order, on one line (RFC 8259). Null
/// and missing cells become null, as do the infinities and NaN, for which JSON has no number. A
/// double always has a point or an exponent, so that it is read back as one; it has as many
/// digits as it takes to read back the same value.
QUILLON_API std::string ToJson(const DataTable& table);
/// Returns the same objects one a line, each ended by LF, without an array around them; a table
/// without rows gives the empty text.
QUILLON_API std::string ToJsonLines(const DataTable& table);
/// Returns a heading line and one line a row, each ended by CR LF (RFC 4180). Null and missing
/// cells become an empty field, the empty text becomes two quotes. Fields with a comma, a quote
/// or a line end are quoted. A table without columns gives the empty text.
QUILLON_API std::string ToCsv(const DataTable& table);

/// Reads an array of objects, or one object a line; a byte-order mark is skipped and invalid
/// UTF-8 becomes U+FFFD. Integers become integers (outside the signed 64-bit range: doubles),
/// other numbers doubles; an array or object as a value becomes its JSON text, and may be
/// nested at most 64 deep. The table gets no column definitions; a text without objects gives
/// an undefined table. Throws TableFormatError.
QUILLON_API DataTable FromJson(std::string_view json);
/// Reads RFC 4180 text whose first record names the columns, which become definitions without a
/// type. Every field becomes a text, an empty unquoted one null. Records end with CR LF or LF;
/// a byte-order mark is skipped and invalid UTF-8 becomes U+FFFD. An empty text gives an
/// undefined table. Throws TableFormatError for a record whose number of fields differs, a
/// quote that is not closed or stands inside an unquoted field, and text after a closing quote.
QUILLON_API DataTable FromCsv(std::string_view csv);

}  // namespace quillon
