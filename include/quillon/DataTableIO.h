#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// Tables as text. Columns are those of GetColumnNames(), followed by the columns
/// that only later rows have, in order of appearance; the first of several cells
/// of one name counts. Output is always valid UTF-8: an invalid sequence becomes
/// U+FFFD. Time points are ISO 8601 texts.

/// Text that FromJson or FromCsv cannot read; the message tells where.
class QUILLON_API TableFormatError : public std::runtime_error {
public:
    explicit TableFormatError(const std::string& message);
    TableFormatError(const TableFormatError&) = default;
    TableFormatError& operator=(const TableFormatError&) = default;
    ~TableFormatError() override;
};

/// A heading, a rule and one line a row, the columns aligned by character count
/// and parted by two blanks; integers and doubles to the right. Line ends and
/// other control characters inside a cell are written as escapes. A null or
/// missing cell is blank. No column gives the empty text.
QUILLON_API std::string ToText(const DataTable& table);
/// An array of objects, one a row, keys in column order (RFC 8259). Null and
/// missing cells are null, as are doubles that JSON has no number for.
QUILLON_API std::string ToJson(const DataTable& table);
/// One object a line, no array around them.
QUILLON_API std::string ToJsonLines(const DataTable& table);
/// A heading line and one line a row, ended by CR LF (RFC 4180). Null is an empty
/// field, the empty text a quoted one.
QUILLON_API std::string ToCsv(const DataTable& table);

/// Reads an array of objects, or one object a line. Integers become integers
/// exactly (out of the 64-bit range: doubles), other numbers doubles; arrays and
/// objects as values become their JSON text. Throws TableFormatError.
QUILLON_API DataTable FromJson(std::string_view json);
/// Reads RFC 4180 text whose first record names the columns. Every field is a
/// text, an empty unquoted one null. Records end with CR LF or LF. Throws
/// TableFormatError (a record of another length, a quote that is not closed).
QUILLON_API DataTable FromCsv(std::string_view csv);

}  // namespace quillon
