#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Require.h"
#include "base/Utf.h"
#include "quillon/Wql.h"
#include "simulation/wql/WqlPattern.h"
#include "simulation/wql/WqlQuery.h"

// Any text as a query, as a condition and as a value. Conditions are held against the laws of logic, quoting
// against the parser, and patterns without sets against a table of all their beginnings.

namespace {

using quillon::simulation::MatchesLike;
using quillon::simulation::WqlQuery;

constexpr std::size_t kLongestForTable = 200;

/// UTF-8, or where it is none with surrogates for what is not ASCII.
std::wstring Units(const std::string& text) {
    if (auto wide = quillon::base::Utf8ToWide(text)) return *wide;
    std::wstring units;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        units += static_cast<wchar_t>(byte < 0x80 ? byte : 0xD780 + byte);
    }
    return units;
}

const VARIANT* Find(std::wstring_view name) {
    static const _variant_t text(L"a text");
    static const _variant_t number(L"18446744073709551615");
    static const _variant_t real(0.5);
    static const _variant_t truth(true);
    static const _variant_t nothing;
    static const VARIANT* const values[] = {&text, &number, &real, &truth, &nothing, nullptr};
    return values[name.empty() ? 0 : static_cast<std::size_t>(name.back()) % std::size(values)];
}

void CheckLogic(const std::wstring& condition) {
    const std::wstring front = L"SELECT * FROM C WHERE ";
    WqlQuery plain;
    if (plain.Parse(front + condition) != 0) return;
    const bool holds = plain.Matches(Find);
    WqlQuery other;
    Require(other.Parse(front + L"NOT(NOT(" + condition + L"))") == 0 && other.Matches(Find) == holds);
    Require(other.Parse(front + L"Z IS NULL AND(" + condition + L")OR Z IS NOT NULL AND Z=1") == 0);
    Require(other.ConditionProperties().size() == plain.ConditionProperties().size() + 3);
    Require(other.Parse(front + L"NOT(" + condition + L")") == 0 && !(other.Matches(Find) && holds));
}

bool Matches(const std::string& condition, const std::wstring& value) {
    _variant_t constant;
    constant.vt = VT_BSTR;
    constant.bstrVal = SysAllocStringLen(value.data(), static_cast<unsigned int>(value.size()));
    WqlQuery query;
    Require(query.Parse(quillon::base::ToWide("SELECT * FROM C WHERE V " + condition)) == 0);
    return query.Matches([&constant](std::wstring_view) { return &constant; });
}

void CheckQuoting(const std::string& text, const std::string& other) {
    const std::wstring value = quillon::base::ToWide(text);
    const std::string pattern = "LIKE '" + quillon::WqlLikeEscape(text) + '\'';
    Require(Matches("= " + quillon::WqlQuote(text), value));
    Require(Matches(pattern, value));
    Require(!Matches(pattern, value + L'x') && !Matches(pattern, L'x' + value));
    const std::wstring otherValue = quillon::base::ToWide(other);
    Require(Matches(pattern, otherValue) == Matches("= " + quillon::WqlQuote(text), otherValue));
}

bool MatchesByTable(const std::wstring& text, const std::wstring& pattern) {
    std::vector<char> row(text.size() + 1, 0);
    row[0] = 1;  // whether the pattern so far matches the first i units
    for (const wchar_t element : pattern) {
        for (std::size_t i = text.size() + 1; element != L'%' && i-- > 0;) {
            row[i] = i > 0 && row[i - 1] && (element == L'_' || element == text[i - 1]);
        }
        for (std::size_t i = 1; element == L'%' && i < row.size(); ++i) row[i] = row[i] || row[i - 1];
    }
    return row.back() != 0;
}

void CheckPattern(const std::wstring& text, const std::wstring& pattern) {
    const bool matches = MatchesLike(text, pattern);
    if (text.size() + pattern.size() > kLongestForTable || pattern.find(L'[') != std::wstring::npos) return;
    const auto isUpper = [](wchar_t c) { return c >= L'A' && c <= L'Z'; };
    for (const wchar_t c : text + pattern) {
        if (isUpper(c)) return;
    }
    Require(matches == MatchesByTable(text, pattern));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::wstring units = Units(bytes);
    WqlQuery query;
    if (query.Parse(units) == 0) query.Matches(Find);
    CheckLogic(units);

    const std::size_t cut = bytes.find('\n');
    const std::string first = bytes.substr(0, cut);
    const std::string second = cut == std::string::npos ? first : bytes.substr(cut + 1);
    CheckPattern(Units(first), Units(second));
    if (bytes.find('\0') != std::string::npos) return 0;
    CheckQuoting(quillon::base::RepairUtf8(first), quillon::base::RepairUtf8(second));
    return 0;
}
