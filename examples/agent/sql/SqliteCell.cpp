#include "sql/SqliteCell.h"

#include <charconv>
#include <cmath>
#include <string>
#include <typeinfo>

#include "quillon/StringUtils.h"
#include "quillon/detail/FromChars.h"

namespace quillon::agent {

namespace {

constexpr long long kLargestExact = 1LL << 53;  // in a double

int BindText(sqlite3_stmt* statement, int index, std::string_view text, sqlite3_destructor_type lifetime) {
    return sqlite3_bind_text64(statement, index, text.data(), text.size(), lifetime, SQLITE_UTF8);
}

int BindBlob(sqlite3_stmt* statement, int index, std::string_view bytes, sqlite3_destructor_type lifetime) {
    return sqlite3_bind_blob64(statement, index, bytes.data(), bytes.size(), lifetime);
}

bool IsExactReal(long long value) { return value >= -kLargestExact && value <= kLargestExact; }

/// At most what SQLite takes for a number.
bool MayBeNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789+-.eE \t\n\v\f\r") == std::string_view::npos;
}

std::string ShortestText(double value) {
    char buffer[32];
    return std::string(buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr);
}

int BindInteger(sqlite3_stmt* statement, int index, SqliteAffinity affinity, long long value) {
    if (affinity == SqliteAffinity::Real && !IsExactReal(value))
        return BindBlob(statement, index, std::to_string(value), SQLITE_TRANSIENT);
    return sqlite3_bind_int64(statement, index, value);
}

/// A text that says no more than a number becomes the number: SQLite itself reads reals with errors.
int BindNumberText(sqlite3_stmt* statement, int index, SqliteAffinity affinity, const std::string& text) {
    const char* const end = text.data() + text.size();
    long long integer = 0;
    double real = 0;
    if (std::from_chars(text.data(), end, integer).ptr == end && std::to_string(integer) == text)
        return BindInteger(statement, index, affinity, integer);
    const bool isPlain = text.find('.') != std::string::npos && text.find('e') == std::string::npos;
    if (isPlain && detail::FromChars(text.data(), end, real).ptr == end && ShortestText(real) == text)
        return sqlite3_bind_double(statement, index, real);
    return BindBlob(statement, index, text, SQLITE_STATIC);
}

int BindString(sqlite3_stmt* statement, int index, SqliteAffinity affinity, const Variant& cell) {
    const std::string& text = cell.GetStringValue();
    if (cell.TypeIs(typeid(TimePoint)))  // the text is shared by all of the row
        return BindText(statement, index, text, SQLITE_TRANSIENT);
    const bool isNumbers = affinity == SqliteAffinity::Integer || affinity == SqliteAffinity::Real;
    if (isNumbers && MayBeNumber(text)) return BindNumberText(statement, index, affinity, text);
    return BindText(statement, index, text, SQLITE_STATIC);
}

int BindReal(sqlite3_stmt* statement, int index, SqliteAffinity affinity, double value) {
    if (affinity == SqliteAffinity::Text && !std::isnan(value))  // SQLite writes 15 digits only
        return BindText(statement, index, ShortestText(value), SQLITE_TRANSIENT);
    return sqlite3_bind_double(statement, index, value);
}

}  // namespace

SqliteAffinity AffinityOf(std::string_view declaredType) {
    if (declaredType.empty()) return SqliteAffinity::None;
    const std::string type = StringUtils::ToUppercase(std::string(declaredType));
    const auto holds = [&type](const char* word) { return type.find(word) != std::string::npos; };
    if (holds("INT")) return SqliteAffinity::Integer;
    if (holds("CHAR") || holds("CLOB") || holds("TEXT")) return SqliteAffinity::Text;
    if (holds("BLOB")) return SqliteAffinity::None;
    if (holds("REAL") || holds("FLOA") || holds("DOUB")) return SqliteAffinity::Real;
    return SqliteAffinity::Integer;  // "numeric" changes values as that does
}

int BindCell(sqlite3_stmt* statement, int index, SqliteAffinity affinity, const Variant& cell) {
    switch (cell.SqlType()) {
        case SQLITE_INTEGER:
            return BindInteger(statement, index, affinity, cell.GetLongLongValue());
        case SQLITE_FLOAT:
            return BindReal(statement, index, affinity, cell.GetDoubleValue());
        case SQLITE_NULL:
            return sqlite3_bind_null(statement, index);
        default:
            return BindString(statement, index, affinity, cell);
    }
}

}  // namespace quillon::agent
