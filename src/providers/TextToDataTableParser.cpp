#include "quillon/TextToDataTableParser.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <typeinfo>

#include "base/Characters.h"
#include "base/DateTimeText.h"
#include "base/NumberText.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using base::IsSpace;

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

/// One field up to a space, the line's end or a zero. The cursor goes past the
/// spaces that follow.
std::string_view TakeSpaceSeparated(const char*& cursor, char lineEnd) {
    const char* const start = cursor;
    while (*cursor != ' ' && *cursor != lineEnd && *cursor != '\0') ++cursor;
    const std::string_view field(start, static_cast<std::size_t>(cursor - start));
    while (*cursor == ' ') ++cursor;
    return field;
}

std::string_view TakeRest(const char*& cursor, char lineEnd) {
    const char* const start = cursor;
    while (*cursor != lineEnd && *cursor != '\0') ++cursor;
    return std::string_view(start, static_cast<std::size_t>(cursor - start));
}

unsigned long long Magnitude(long long value) {
    const auto bits = static_cast<unsigned long long>(value);
    return value < 0 ? 0 - bits : bits;
}

/// The product, or the range's end on its side.
long long SaturatingProduct(long long a, long long b) {
    constexpr long long kMax = std::numeric_limits<long long>::max();
    constexpr long long kMin = std::numeric_limits<long long>::min();
    if (a == 0 || b == 0) return 0;
    const bool negative = (a < 0) != (b < 0);
    const unsigned long long limit = Magnitude(negative ? kMin : kMax);
    if (Magnitude(a) > limit / Magnitude(b)) return negative ? kMin : kMax;
    const unsigned long long product = Magnitude(a) * Magnitude(b);
    return static_cast<long long>(negative ? 0 - product : product);
}

bool ToBool(std::string_view text) {
    constexpr std::string_view kTrue = "true";
    return text == "1" || (text.size() == kTrue.size() &&
                           StringUtils::CompareCaseInsensitive(std::string(text), std::string(kTrue)));
}

/// The line feed at or after the cursor, else the end.
const char* FindLineEnd(const char* cursor, const char* end) {
    const void* const found = std::memchr(cursor, '\n', static_cast<std::size_t>(end - cursor));
    return found == nullptr ? end : static_cast<const char*>(found);
}

}  // namespace

IParsableField::IParsableField() = default;
IParsableField::~IParsableField() = default;

SpaceSeparatedField::SpaceSeparatedField() = default;
SpaceSeparatedField::~SpaceSeparatedField() = default;

bool SpaceSeparatedField::Parse(const char** cursor, std::string& value) {
    value.append(TakeSpaceSeparated(*cursor, '\0'));
    return true;
}

NullSeparatedField::NullSeparatedField() = default;
NullSeparatedField::~NullSeparatedField() = default;

bool NullSeparatedField::Parse(const char** cursor, std::string& value) {
    value.append(TakeRest(*cursor, '\0'));
    return true;
}

TextToDataTableParser::TextToDataTableParser() = default;
TextToDataTableParser::~TextToDataTableParser() = default;

template <>
TextToDataTableParser::Converter TextToDataTableParser::MakeConverter<std::string>(const std::string& name,
                                                                                   long long) {
    return [name](std::string_view text, VariantList& row) { row.Add(name, std::string(text)); };
}

template <>
TextToDataTableParser::Converter TextToDataTableParser::MakeConverter<long long>(const std::string& name,
                                                                                 long long multiplier) {
    const long long factor = multiplier == 0 ? 1 : multiplier;
    return [name, factor](std::string_view text, VariantList& row) {
        row.Add(name, SaturatingProduct(base::ReadSigned<long long>(text), factor));
    };
}

template <>
TextToDataTableParser::Converter TextToDataTableParser::MakeConverter<bool>(const std::string& name,
                                                                            long long) {
    return [name](std::string_view text, VariantList& row) { row.Add(name, ToBool(text)); };
}

template <>
TextToDataTableParser::Converter TextToDataTableParser::MakeConverter<double>(const std::string& name,
                                                                              long long multiplier) {
    const double factor = multiplier == 0 ? 1 : static_cast<double>(multiplier);
    return [name, factor](std::string_view text, VariantList& row) {
        if (text.starts_with('+')) text.remove_prefix(1);
        double number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        row.Add(name, number * factor);
    };
}

template <>
TextToDataTableParser::Converter TextToDataTableParser::MakeConverter<TimePoint>(const std::string& name,
                                                                                 long long) {
    return [name](std::string_view text, VariantList& row) {
        if (const auto ticks = base::ReadDateTime(text))
            row.Add(Variant(name, TimePoint(TimePoint::duration(*ticks))));
    };
}

template <class T>
void TextToDataTableParser::AddField(const std::string& name, IParsableField* field, long long multiplier) {
    std::unique_ptr<IParsableField> owned(field);
    if (!owned) throw std::invalid_argument("a column needs a field");
    // A class that is derived from the two may read differently.
    const IParsableField& reader = *owned;
    const std::type_info& type = typeid(reader);
    const Reach reach = type == typeid(SpaceSeparatedField)  ? Reach::ToSpace
                        : type == typeid(NullSeparatedField) ? Reach::ToLineEnd
                                                             : Reach::Own;
    m_columns.push_back({std::move(owned), reach, MakeConverter<T>(name, multiplier)});
    m_hasOwnFields = m_hasOwnFields || reach == Reach::Own;
}

template QUILLON_API void TextToDataTableParser::AddField<std::string>(const std::string&, IParsableField*,
                                                                       long long);
template QUILLON_API void TextToDataTableParser::AddField<long long>(const std::string&, IParsableField*,
                                                                     long long);
template QUILLON_API void TextToDataTableParser::AddField<bool>(const std::string&, IParsableField*,
                                                                long long);

template QUILLON_API void TextToDataTableParser::AddField<double>(const std::string&, IParsableField*,
                                                                  long long);
template QUILLON_API void TextToDataTableParser::AddField<TimePoint>(const std::string&, IParsableField*,
                                                                     long long);

const char* TextToDataTableParser::ParseLine(const char* cursor, VariantList& row) const {
    std::string own;
    for (const Column& column : m_columns) {
        std::string_view value;
        if (column.reach == Reach::ToSpace) {
            value = TakeSpaceSeparated(cursor, '\n');
        } else if (column.reach == Reach::ToLineEnd) {
            value = TakeRest(cursor, '\n');
        } else {
            own.clear();
            column.field->Parse(&cursor, own);
            value = own;
        }
        value = Trimmed(value);
        if (!value.empty()) column.convert(value, row);
    }
    return cursor;
}

void TextToDataTableParser::Parse(const std::string& text, DataTable& table) const {
    const char* const end = text.c_str() + text.size();
    VariantList row;
    std::string line;
    for (const char* cursor = text.c_str(); cursor != end;) {
        row.Reserve(m_columns.size());
        if (m_hasOwnFields) {
            const char* const lineEnd = FindLineEnd(cursor, end);
            line.assign(cursor, lineEnd);
            ParseLine(line.c_str(), row);
            cursor = lineEnd;
        } else {
            cursor = FindLineEnd(ParseLine(cursor, row), end);
        }
        if (cursor != end) ++cursor;
        if (row.Size() == 0) continue;
        table.AddRow(std::move(row));
        row = VariantList();
    }
}

}  // namespace quillon
