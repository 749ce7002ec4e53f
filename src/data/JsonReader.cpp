#include "data/JsonReader.h"

#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

#include "base/HexDigits.h"
#include "base/RealText.h"
#include "base/Utf.h"
#include "data/CellAccess.h"
#include "data/DataTableColumns.h"
#include "data/JsonText.h"
#include "data/SpecialBytes.h"
#include "data/TextPlace.h"
#include "quillon/detail/FromChars.h"

namespace quillon {
namespace {

constexpr std::size_t kDeepestNesting = 64;
constexpr std::string_view kUnit = "row";

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

void AppendCharacter(std::string& output, unsigned code) {
    const auto tail = [&](unsigned shift) { output += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        output += static_cast<char>(code);
    } else if (code < 0x800) {
        output += static_cast<char>(0xC0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        output += static_cast<char>(0xE0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        output += static_cast<char>(0xF0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

JsonReader::JsonReader(std::string_view text, DataTable& table)
    : m_text(text),
      m_position(WithoutByteOrderMark(text).data()),
      m_end(text.data() + text.size()),
      m_valid(base::FindInvalidUtf8(text) == std::string_view::npos),
      m_table(table) {}

void JsonReader::Fail(const char* position, const std::string& reason) const {
    const auto offset = static_cast<std::size_t>(position - m_text.data());
    ThrowFormatError(kUnit, m_table.GetNumberOfRows() + 1, m_text, offset, reason);
}

bool JsonReader::Skip(char character) {
    if (!IsAt(character)) return false;
    ++m_position;
    return true;
}

bool JsonReader::SkipWord(std::string_view word) {
    const std::string_view rest(m_position, static_cast<std::size_t>(m_end - m_position));
    if (!rest.starts_with(word)) return false;
    m_position += word.size();
    return true;
}

void JsonReader::SkipSpace() {
    while (!AtEnd() && IsSpace(*m_position)) ++m_position;
}

void JsonReader::Expect(char character) {
    SkipSpace();
    if (!Skip(character)) Fail(m_position, std::string("expected '") + character + '\'');
}

void JsonReader::Read() {
    RefuseUtf16(kUnit, m_text);
    SkipSpace();
    if (Skip('[')) {
        ReadArray();
    } else {
        ReadObjects();
    }
}

void JsonReader::ReadArray() {
    SkipSpace();
    bool more = !Skip(']');
    while (more) {
        ReadRow();
        SkipSpace();
        more = Skip(',');
        if (!more && !Skip(']')) Fail(m_position, "expected ',' or ']'");
    }
    SkipSpace();
    if (!AtEnd()) Fail(m_position, "text after the end");
}

void JsonReader::ReadObjects() {
    for (SkipSpace(); !AtEnd(); SkipSpace()) {
        ReadRow();
        while (Skip(' ') || Skip('\t')) continue;
        if (!AtEnd() && !IsAt('\n') && !IsAt('\r')) Fail(m_position, "expected a line end");
    }
}

void JsonReader::ReadRow() {
    SkipSpace();
    if (!Skip('{')) Fail(m_position, "not an object");
    VariantList row;
    row.Reserve(m_names.size());
    SkipSpace();
    bool more = !Skip('}');
    for (std::size_t column = 0; more; ++column) {
        HeldName& name = ReadName(column);
        Expect(':');
        SkipSpace();
        ReadCell(row, name);
        SkipSpace();
        more = Skip(',');
        if (!more && !Skip('}')) Fail(m_position, "expected ',' or '}'");
    }
    m_table.AddRow(std::move(row));
}

/// Rows mostly have the names of the row before them.
HeldName& JsonReader::ReadName(std::size_t column) {
    SkipSpace();
    if (!IsAt('"')) Fail(m_position, "expected a name in quotes");
    if (column < m_names.size() && SkipExpected(m_names[column])) return m_names[column].held;
    const std::string_view name = ReadString();
    const bool isPlain = FindJsonSpecial<AlsoFind::Nothing>(name.data(), name.data() + name.size()) ==
                         name.data() + name.size();
    if (column == m_names.size()) m_names.emplace_back();
    if (!m_names[column].held.Equals(name)) m_names[column] = {HeldName(name), isPlain};
    return m_names[column].held;
}

/// Moves past a name when it stands there, in quotes, as it is.
bool JsonReader::SkipExpected(const Name& name) {
    const std::string_view text = name.held.Text();
    const std::string_view rest(m_position + 1, static_cast<std::size_t>(m_end - m_position - 1));
    const bool isThere = name.isPlain && rest.starts_with(text) && rest.substr(text.size()).starts_with('"');
    if (isThere) m_position += text.size() + 2;
    return isThere;
}

void JsonReader::ReadCell(VariantList& row, HeldName& name) {
    if (IsAt('"')) {
        CellAccess::AddText(row, name, ReadString());
    } else if (IsAt('{') || IsAt('[')) {
        std::string nested;
        AppendNested(nested, 1);
        CellAccess::AddText(row, name, std::move(nested));
    } else if (SkipWord("null")) {
        CellAccess::AddNull(row, name);
    } else if (SkipWord("true")) {
        CellAccess::AddBoolean(row, name, true);
    } else if (SkipWord("false")) {
        CellAccess::AddBoolean(row, name, false);
    } else {
        ReadNumberCell(row, name);
    }
}

void JsonReader::ReadNumberCell(VariantList& row, HeldName& name) {
    const char* const start = m_position;
    long long integer = 0;
    const bool isInteger = PassNumber() && std::from_chars(start, m_position, integer).ec == std::errc();
    if (isInteger && (integer != 0 || *start != '-')) {
        CellAccess::AddInteger(row, name, integer);
    } else {
        CellAccess::AddDouble(row, name, ToDouble(start));
    }
}

bool JsonReader::PassNumber() {
    const char* const start = m_position;
    Skip('-');
    if (AtEnd() || !IsDigit(*m_position)) Fail(start, "expected a value");
    if (!Skip('0')) PassDigits();
    bool isInteger = true;
    if (Skip('.')) {
        PassDigits();
        isInteger = false;
    }
    if (Skip('e') || Skip('E')) {
        if (!Skip('+')) Skip('-');
        PassDigits();
        isInteger = false;
    }
    return isInteger;
}

void JsonReader::PassDigits() {
    if (AtEnd() || !IsDigit(*m_position)) Fail(m_position, "expected a digit");
    while (!AtEnd() && IsDigit(*m_position)) ++m_position;
}

/// Gives the number from `start` to the position; one that is too close to 0 is 0.
double JsonReader::ToDouble(const char* start) const {
    double value = 0;
    const std::errc error = detail::FromChars(start, m_position, value).ec;
    if (error != std::errc()) {
        value = base::RealBeyondRange({start, m_position});
        if (std::isinf(value)) Fail(start, "the number is out of range");
    }
    return value;
}

void JsonReader::AppendNested(std::string& output, std::size_t depth) {
    SkipSpace();
    const char* const start = m_position;
    if (IsAt('{') || IsAt('[')) {
        if (depth > kDeepestNesting) Fail(m_position, "values are nested too deep");
        AppendNestedItems(output, depth, IsAt('{') ? '}' : ']');
    } else if (IsAt('"')) {
        AppendJsonString(output, ReadString());
    } else {
        if (!SkipWord("null") && !SkipWord("true") && !SkipWord("false")) {
            PassNumber();
            ToDouble(start);
        }
        output.append(start, m_position);
    }
}

void JsonReader::AppendNestedItems(std::string& output, std::size_t depth, char close) {
    output += *m_position++;
    SkipSpace();
    bool more = !Skip(close);
    while (more) {
        if (close == '}') {
            SkipSpace();
            if (!IsAt('"')) Fail(m_position, "expected a name in quotes");
            AppendJsonString(output, ReadString());
            Expect(':');
            output += ':';
        }
        AppendNested(output, depth + 1);
        SkipSpace();
        more = Skip(',');
        if (more) output += ',';
        if (!more && !Skip(close)) Fail(m_position, std::string("expected ',' or '") + close + '\'');
    }
    output += close;
}

std::string_view JsonReader::ReadString() {
    const char* const opening = m_position;
    const char* from = ++m_position;
    m_position = FindJsonSpecial<AlsoFind::Nothing>(m_position, m_end);
    std::string_view text(from, static_cast<std::size_t>(m_position - from));
    if (!IsAt('"')) {
        m_unescaped.clear();
        for (;;) {
            m_unescaped.append(from, m_position);
            if (AtEnd()) Fail(opening, "a quote is not closed");
            if (*m_position == '"') break;
            if (*m_position != '\\') Fail(m_position, "a control character inside quotes");
            AppendEscaped(m_unescaped);
            from = m_position;
            m_position = FindJsonSpecial<AlsoFind::Nothing>(m_position, m_end);
        }
        text = m_unescaped;
    }
    ++m_position;
    return m_valid ? text : ValidUtf8(text, m_repaired);
}

void JsonReader::AppendEscaped(std::string& output) {
    constexpr std::string_view kEscapes = "\"\\/bfnrt", kMeanings = "\"\\/\b\f\n\r\t";
    const char* const start = m_position++;
    const std::size_t escape = AtEnd() ? std::string_view::npos : kEscapes.find(*m_position);
    if (escape != std::string_view::npos) {
        ++m_position;
        output += kMeanings[escape];
        return;
    }
    if (!Skip('u')) Fail(start, "an unknown escape");
    unsigned code = ReadHexUnit();
    const bool isPair = (code & 0xFC00) == 0xD800 && SkipWord("\\u");
    const unsigned low = isPair ? ReadHexUnit() : 0;
    if (isPair && (low & 0xFC00) == 0xDC00) {
        code = 0x10000 + ((code & 0x3FF) << 10) + (low & 0x3FF);
    } else if ((code & 0xF800) == 0xD800) {
        Fail(start, "a surrogate without its pair");
    }
    AppendCharacter(output, code);
}

unsigned JsonReader::ReadHexUnit() {
    unsigned unit = 0;
    for (int i = 0; i < 4; ++i, ++m_position) {
        const int digit = AtEnd() ? -1 : base::HexDigit(*m_position);
        if (digit < 0) Fail(m_position, "expected four hexadecimal digits");
        unit = unit << 4 | static_cast<unsigned>(digit);
    }
    return unit;
}

}  // namespace quillon
