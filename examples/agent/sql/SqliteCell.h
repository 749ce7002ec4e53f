#pragma once

#include <sqlite3.h>

#include <string_view>

#include "quillon/Variant.h"

namespace quillon::agent {

/// How a column changes the values that are put into it, told by its declared type.
enum class SqliteAffinity { None, Text, Integer, Real };

SqliteAffinity AffinityOf(std::string_view declaredType);

/// Binds a cell, which must stay until the statement has run, so that its column
/// changes at most the kind, never what the value says: a boolean becomes 0 or 1, a
/// time point its ISO 8601 text, and NaN null, as SQLite has none. Where SQLite would
/// change more (the text "007" in a column of numbers, an integer past 53 bits in a
/// column of reals), the value's text is stored as a blob, which reads back as that text.
/// An SQLite code.
int BindCell(sqlite3_stmt* statement, int index, SqliteAffinity affinity, const Variant& cell);

}  // namespace quillon::agent
