#include "quillon/TextToDataTableParser.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "base/Characters.h"
#include "base/DateTimeText.h"
#include "base/NumberText.h"
#include "base/RealText.h"
#include "quillon/StringUtils.h"
#include "quillon/TextFields.h"
#include "quillon/detail/FromChars.h"
#include "quillon/detail/RowBuilder.h"

namespace quillon {

namespace {

using base::IsSpace;

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

/// One field up to a space or the end. The cursor goes past the spaces that follow.
std::string_view TakeSpaceSeparated(const char*& cursor, const char* end) {
    const char* const start = cursor;
    while (cursor != end && *cursor != ' ') ++cursor;
    const std::string_view field(start, static_cast<std::size_t>(cursor - start));
    while (cursor != end && *cursor == ' ') ++cursor;
    return field;
}

std::string_view TakeRest(const char*& cursor, const char* end) {
    const char* const start = std::exchange(cursor, end);
    return std::string_view(start, static_cast<std::size_t>(end - start));
}

/// The product, or the range's end on its side.
long long SaturatingProduct(long long a, long long b) {
    if (b == 1 || a == 0 || b == 0) return b == 1 ? a : 0;
    const auto size = [](long long n) {
        return n < 0 ? 0 - static_cast<std::uint64_t>(n) : static_cast<std::uint64_t>(n);
    };
    const long long end =
        (a < 0) != (b < 0) ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
    return size(a) <= size(end) / size(b) ? a * b : end;
}

bool ToBool(std::string_view text) {
    constexpr std::string_view kTrue = "true";
    return text == "1" || (text.size() == kTrue.size() &&
                           StringUtils::CompareCaseInsensitive(std::string(text), std::string(kTrue)));
}

/// Whether a field is certain to be empty at the end of a line. A class that is derived from one of these may
/// read differently.
bool IsEmptyAtLineEnd(const IParsableField& field) {
    const std::type_info& kind = typeid(field);
    return kind == typeid(SpaceSeparatedField) || kind == typeid(NullSeparatedField) ||
           kind == typeid(BlankSeparatedField) || kind == typeid(FixedWidthField) ||
           kind == typeid(CharSeparatedField) || kind == typeid(QuotedField);
}

/// The character at or after the cursor, else the end.
const char* FindCharacter(char wanted, const char* cursor, const char* end) {
    const void* const found = std::memchr(cursor, wanted, static_cast<std::size_t>(end - cursor));
    return found == nullptr ? end : static_cast<const char*>(found);
}

double ToDouble(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const char* const last = text.data() + text.size();
    double number = 0;
    const auto [end, error] = detail::FromChars(text.data(), last, number);
    if (error == std::errc::result_out_of_range) return base::RealBeyondRange({text.data(), end});
    return std::isfinite(number) || end == last ? number : 0;  // "info" is not infinite
}

}  // namespace

IParsableField::IParsableField() = default;
IParsableField::~IParsableField() = default;

SpaceSeparatedField::SpaceSeparatedField() = default;
SpaceSeparatedField::~SpaceSeparatedField() = default;

bool SpaceSeparatedField::Parse(const char** cursor, std::string& value) {
    value.append(TakeSpaceSeparated(*cursor, *cursor + std::strlen(*cursor)));
    return true;
}

NullSeparatedField::NullSeparatedField() = default;
NullSeparatedField::~NullSeparatedField() = default;

bool NullSeparatedField::Parse(const char** cursor, std::string& value) {
    value.append(TakeRest(*cursor, *cursor + std::strlen(*cursor)));
    return true;
}

TextToDataTableParser::TextToDataTableParser() = default;
TextToDataTableParser::~TextToDataTableParser() = default;

/// Makes rows of lines, for one call of Parse().
class TextToDataTableParser::LineReader {
public:
    LineReader(const TextToDataTableParser& parser, bool hasZeros, DataTable& table)
        : m_columns(parser.m_columns),
          m_hasOwnFields(parser.m_hasOwnFields),
          m_hasZeros(hasZeros),
          m_needed(NeededOf(m_columns)),
          m_row(NamesOf(m_columns), table) {}

    /// Reads a line without its line feed.
    void Read(const char* cursor, const char* end) {
        if (m_hasOwnFields) {  // which need a NUL at its end
            m_line.assign(cursor, end);
            cursor = m_line.c_str();
            end = cursor + m_line.size();
        }
        if (m_hasZeros) end = FindCharacter('\0', cursor, end);
        // A short line must not cost what the many columns of a hostile heading do.
        for (std::size_t place = 0; place < m_columns.size(); ++place) {
            if (cursor == end && place >= m_needed) break;
            const std::string_view text = Trimmed(Take(m_columns[place], cursor, end));
            if (!text.empty()) AddCell(place, text);
        }
        m_row.EndRow();
    }

private:
    static std::vector<std::string> NamesOf(const std::vector<Column>& columns) {
        std::vector<std::string> names;
        for (const Column& column : columns) names.push_back(column.name);
        return names;
    }

    /// How many columns have to be read on every line, however short it is.
    static std::size_t NeededOf(const std::vector<Column>& columns) {
        std::size_t needed = columns.size();
        while (needed > 0 && IsEmptyAtLineEnd(*columns[needed - 1].field)) --needed;
        return needed;
    }

    std::string_view Take(const Column& column, const char*& cursor, const char* end) {
        if (column.reach == Reach::ToSpace) return TakeSpaceSeparated(cursor, end);
        if (column.reach == Reach::ToLineEnd) return TakeRest(cursor, end);
        m_value.clear();
        column.field->Parse(&cursor, m_value);
        return m_value;
    }

    void AddCell(std::size_t place, std::string_view text) {
        const Column& column = m_columns[place];
        const long long factor = column.multiplier == 0 ? 1 : column.multiplier;
        switch (column.type) {
            case Type::Text:
                return m_row.AddText(place, text);
            case Type::Integer:
                return m_row.AddInteger(place, SaturatingProduct(base::ReadSigned<long long>(text), factor));
            case Type::Boolean:
                return m_row.AddBoolean(place, ToBool(text));
            case Type::Real:
                return m_row.AddDouble(place, ToDouble(text) * static_cast<double>(factor));
            case Type::Time:
                if (const auto ticks = base::ReadDateTime(text))
                    m_row.Add(Variant(column.name, TimePoint(TimePoint::duration(*ticks))));
        }
    }

    const std::vector<Column>& m_columns;
    const bool m_hasOwnFields, m_hasZeros;
    const std::size_t m_needed;
    detail::RowBuilder m_row;
    std::string m_line, m_value;
};

void TextToDataTableParser::AddColumn(const std::string& name, IParsableField* field, Type type,
                                      long long multiplier) {
    std::unique_ptr<IParsableField> owned(field);
    if (!owned) throw std::invalid_argument("a column needs a field");
    // A class that is derived from the two may read differently.
    const IParsableField& reader = *owned;
    const std::type_info& kind = typeid(reader);
    const Reach reach = kind == typeid(SpaceSeparatedField)  ? Reach::ToSpace
                        : kind == typeid(NullSeparatedField) ? Reach::ToLineEnd
                                                             : Reach::Own;
    m_columns.push_back({name, std::move(owned), reach, type, multiplier});
    m_hasOwnFields = m_hasOwnFields || reach == Reach::Own;
}

template <class T>
void TextToDataTableParser::AddOwnedField(const std::string& name, IParsableField* field,
                                          long long multiplier) {
    constexpr Type kType = std::is_same_v<T, std::string> ? Type::Text
                           : std::is_same_v<T, long long> ? Type::Integer
                           : std::is_same_v<T, bool>      ? Type::Boolean
                           : std::is_same_v<T, double>    ? Type::Real
                                                          : Type::Time;
    AddColumn(name, field, kType, multiplier);
}

template QUILLON_API void TextToDataTableParser::AddOwnedField<std::string>(const std::string&,
                                                                            IParsableField*, long long);
template QUILLON_API void TextToDataTableParser::AddOwnedField<long long>(const std::string&, IParsableField*,
                                                                          long long);
template QUILLON_API void TextToDataTableParser::AddOwnedField<bool>(const std::string&, IParsableField*,
                                                                     long long);

template QUILLON_API void TextToDataTableParser::AddOwnedField<double>(const std::string&, IParsableField*,
                                                                       long long);
template QUILLON_API void TextToDataTableParser::AddOwnedField<TimePoint>(const std::string&, IParsableField*,
                                                                          long long);

void TextToDataTableParser::Parse(const std::string& text, DataTable& table) const {
    const char* const end = text.c_str() + text.size();
    LineReader reader(*this, text.find('\0') != std::string::npos, table);
    for (const char* cursor = text.c_str(); cursor != end;) {
        const char* const lineEnd = FindCharacter('\n', cursor, end);
        reader.Read(cursor, lineEnd);
        cursor = lineEnd == end ? end : lineEnd + 1;
    }
}

}  // namespace quillon
