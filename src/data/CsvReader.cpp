#include "data/CsvReader.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "base/RealText.h"
#include "base/Utf.h"
#include "data/DataTableColumns.h"
#include "data/SpecialBytes.h"
#include "data/TextPlace.h"
#include "quillon/detail/FromChars.h"

namespace quillon {
namespace {

constexpr std::string_view kUnit = "record";

/// Reads a whole field as a number; nothing when it is none.
template <class Number>
std::optional<Number> ToNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = detail::FromChars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size()) return std::nullopt;
    if (error == std::errc()) return number;
    if constexpr (std::is_same_v<Number, double>) {
        if (error != std::errc::result_out_of_range) return std::nullopt;
        const double beyond = base::RealBeyondRange(text);
        if (beyond == 0) return beyond;  // too close to 0
    }
    return std::nullopt;
}

std::optional<bool> ToBool(std::string_view text) {
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    return std::nullopt;
}

/// Returns the first definition of each name.
std::unordered_map<std::string_view, const Variant*> ByName(const VariantList& types) {
    std::unordered_map<std::string_view, const Variant*> found;
    for (const Variant& type : types) found.try_emplace(type.GetName(), &type);
    return found;
}

/// A column that is not defined, or without a type, is one of texts.
CellKind KindIn(const Variant& definition) {
    const CellKind kind = KindOf(definition);
    return kind == CellKind::Null || kind == CellKind::Time ? CellKind::Text : kind;
}

}  // namespace

CsvReader::CsvReader(std::string_view text, const CsvOptions& options)
    : m_text(text),
      m_options(options),
      m_position(WithoutByteOrderMark(text).data()),
      m_end(text.data() + text.size()),
      m_lastContent(text.data() + (text.find_last_not_of(" \t\r\n") + 1)),
      m_valid(base::FindInvalidUtf8(text) == std::string_view::npos) {
    CheckSeparator(options);
}

void CsvReader::Fail(const char* position, const std::string& reason) const {
    ThrowFormatError(kUnit, m_record, m_text, static_cast<std::size_t>(position - m_text.data()), reason);
}

bool CsvReader::Skip(char character) {
    if (AtEnd() || *m_position != character) return false;
    ++m_position;
    return true;
}

bool CsvReader::IsOver() const {
    return AtEnd() || (m_options.skipTrailingBlankLines && m_position >= m_lastContent);
}

void CsvReader::Read(DataTable& table) {
    RefuseUtf16(kUnit, m_text);
    if (IsOver()) return;
    ReadHeading(table);
    while (!IsOver()) {
        ++m_record;
        ReadRow(table);
    }
}

void CsvReader::ReadHeading(DataTable& table) {
    std::vector<std::string> names;
    VariantList columns;
    const auto types = ByName(m_options.types);
    do {
        ReadField();
        const std::string& name = names.emplace_back(m_field);
        m_names.emplace_back(name);
        const auto type = types.find(name);
        columns.Add(type != types.end() ? *type->second : Variant::NullVariant(name));
        m_kinds.push_back(KindIn(columns.end()[-1]));
    } while (EndField());
    table.SetDefaultColumnNames(names);  // makes the table defined
    table.SetDefaultColumns(columns);
}

void CsvReader::ReadRow(DataTable& table) {
    const char* const start = m_position;
    VariantList row;
    row.Reserve(m_names.size());
    std::size_t count = 0;
    bool more = true;
    for (; more && count < m_names.size(); ++count) {
        ReadField();
        AddCell(row, count);
        more = EndField();
    }
    if (more) count = PassFurtherFields(count);
    if (count != m_names.size()) {
        Fail(start, std::to_string(count) + " fields instead of " + std::to_string(m_names.size()));
    }
    table.AddRow(std::move(row));
}

/// Counts the fields of a record that has too many.
std::size_t CsvReader::PassFurtherFields(std::size_t count) {
    do {
        ReadField();
        ++count;
    } while (EndField());
    return count;
}

bool CsvReader::EndField() {
    if (Skip(m_options.separator)) return true;
    const bool carriageReturn = Skip('\r'), lineFeed = Skip('\n');
    if (!carriageReturn && !lineFeed && !AtEnd()) Fail(m_position, "text after a closing quote");
    return false;
}

void CsvReader::ReadField() {
    m_start = m_position;
    m_quoted = Skip('"');
    if (m_quoted) {
        ReadQuoted();
    } else {
        m_position = FindCsvSpecial<AlsoFind::Nothing>(m_position, m_end, m_options.separator);
        if (!AtEnd() && *m_position == '"') Fail(m_position, "a quote inside an unquoted field");
        m_field = std::string_view(m_start, static_cast<std::size_t>(m_position - m_start));
    }
    if (!m_valid) m_field = ValidUtf8(m_field, m_repaired);
}

void CsvReader::ReadQuoted() {
    const char* from = m_position;
    m_unquoted.clear();
    for (;;) {
        m_position = std::find(m_position, m_end, '"');
        if (AtEnd()) Fail(m_start, "a quote is not closed");
        const char* const quote = m_position++;
        if (!Skip('"')) {
            m_field = std::string_view(from, static_cast<std::size_t>(quote - from));
            break;
        }
        m_unquoted.append(from, quote + 1);  // the pair gives one quote
        from = m_position;
    }
    if (m_unquoted.empty()) return;
    m_unquoted.append(m_field);
    m_field = m_unquoted;
}

void CsvReader::AddCell(VariantList& row, std::size_t column) {
    HeldName& name = m_names[column];
    const auto require = [&](const auto& value, const char* wanted) {
        if (!value)
            Fail(m_start, std::string("not ") + wanted + " in column '" + std::string(name.Text()) + '\'');
        return *value;
    };
    if (m_field.empty() && !m_quoted) {
        CellAccess::AddNull(row, name);
    } else if (m_kinds[column] == CellKind::Integer) {
        CellAccess::AddInteger(row, name, require(ToNumber<long long>(m_field), "an integer"));
    } else if (m_kinds[column] == CellKind::Boolean) {
        CellAccess::AddBoolean(row, name, require(ToBool(m_field), "a boolean"));
    } else if (m_kinds[column] == CellKind::Double) {
        CellAccess::AddDouble(row, name, require(ToNumber<double>(m_field), "a number"));
    } else {
        CellAccess::AddText(row, name, m_field);
    }
}

void CheckSeparator(const CsvOptions& options) {
    const char separator = options.separator;
    const bool usable = separator != '"' && separator != '\r' && separator != '\n' &&
                        static_cast<unsigned char>(separator) < 0x80;
    if (!usable) throw std::invalid_argument("a separator must be ASCII and neither a quote nor a line end");
}

DataTable FromCsv(std::string_view csv, const CsvOptions& options) {
    DataTable table;
    CsvReader(csv, options).Read(table);
    return table;
}

DataTable FromCsv(std::string_view csv) { return FromCsv(csv, {}); }

}  // namespace quillon
