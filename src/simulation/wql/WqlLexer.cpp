#include "simulation/wql/WqlLexer.h"

#include <new>
#include <string>
#include <utility>

#include "base/Characters.h"
#include "platform/ole/VariantNumber.h"

namespace quillon::simulation {

namespace {

constexpr std::pair<std::wstring_view, WqlToken> kWords[] = {
    {L"SELECT", WqlToken::Select}, {L"FROM", WqlToken::From}, {L"WHERE", WqlToken::Where},
    {L"AND", WqlToken::And},       {L"OR", WqlToken::Or},     {L"NOT", WqlToken::Not},
    {L"LIKE", WqlToken::Like},     {L"IS", WqlToken::Is},     {L"NULL", WqlToken::Null},
};

bool StartsName(wchar_t c) {
    const bool isSurrogate = c >= 0xD800 && c <= 0xDFFF;
    return base::IsLetter(c) || c == L'_' || (c >= 0x80 && !isSurrogate);
}

bool ContinuesName(wchar_t c) { return StartsName(c) || base::IsDigit(c); }

_variant_t BoolConstant(bool value) {
    _variant_t constant;
    constant.vt = VT_BOOL;
    constant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return constant;
}

_variant_t TextConstant(std::wstring_view text) {
    _variant_t constant;
    const BSTR copy = SysAllocStringLen(text.data(), static_cast<unsigned int>(text.size()));
    if (copy == nullptr) throw std::bad_alloc();
    constant.vt = VT_BSTR;
    constant.bstrVal = copy;
    return constant;
}

_variant_t NumberConstant(const platform::VariantNumber& number) {
    _variant_t constant;
    constexpr VARTYPE kTypes[] = {VT_I8, VT_UI8, VT_R8};
    constant.vt = kTypes[number.index()];
    if (const auto* const integer = std::get_if<long long>(&number)) constant.llVal = *integer;
    if (const auto* const natural = std::get_if<unsigned long long>(&number)) constant.ullVal = *natural;
    if (const auto* const real = std::get_if<double>(&number)) constant.dblVal = *real;
    return constant;
}

std::size_t SkipDigits(std::wstring_view text, std::size_t at) {
    while (at < text.size() && base::IsDigit(text[at])) ++at;
    return at;
}

std::size_t SkipSign(std::wstring_view text, std::size_t at) {
    return at < text.size() && (text[at] == L'-' || text[at] == L'+') ? at + 1 : at;
}

/// Returns the length of a number at the beginning: a sign, digits, a point with digits, and an exponent;
/// 0 when there is none.
std::size_t NumberLength(std::wstring_view text) {
    const std::size_t first = SkipSign(text, 0);
    std::size_t end = SkipDigits(text, first);
    if (end == first) return 0;
    if (end < text.size() && text[end] == L'.') end = SkipDigits(text, end + 1);
    if (end == text.size() || base::Lower(text[end]) != L'e') return end;
    const std::size_t exponent = SkipSign(text, end + 1);
    end = SkipDigits(text, exponent);
    return end == exponent ? 0 : end;
}

bool IsEscapable(std::wstring_view text, std::size_t at) {
    return at < text.size() && (text[at] == L'\\' || text[at] == L'\'' || text[at] == L'"');
}

}  // namespace

void WqlLexer::Advance() {
    while (!m_rest.empty() && base::IsSpace(m_rest.front())) m_rest.remove_prefix(1);
    m_token = m_rest.empty() ? WqlToken::End : Read();
    if (m_token == WqlToken::Invalid) m_rest = L"\\";  // what it came to, for the next time
}

WqlToken WqlLexer::Read() {
    const wchar_t c = m_rest.front();
    if (StartsName(c)) return ReadWord();
    if (base::IsDigit(c) || c == L'-' || c == L'+') return ReadNumber();
    return c == L'\'' || c == L'"' ? ReadText() : ReadSign();
}

WqlToken WqlLexer::ReadWord() {
    std::size_t length = 1;
    while (length < m_rest.size() && ContinuesName(m_rest[length])) ++length;
    m_name = m_rest.substr(0, length);
    m_rest.remove_prefix(length);
    for (const auto& [word, token] : kWords) {
        if (base::EqualIgnoringCase(m_name, word)) return token;
    }
    const bool isTrue = base::EqualIgnoringCase(m_name, std::wstring_view(L"TRUE"));
    if (!isTrue && !base::EqualIgnoringCase(m_name, std::wstring_view(L"FALSE"))) return WqlToken::Name;
    m_constant = BoolConstant(isTrue);
    return WqlToken::Constant;
}

WqlToken WqlLexer::ReadNumber() {
    const std::size_t length = NumberLength(m_rest);
    if (length == 0 || (length < m_rest.size() && ContinuesName(m_rest[length]))) return WqlToken::Invalid;
    const auto number = platform::ReadVariantNumber(m_rest.substr(0, length));
    if (!number) return WqlToken::Invalid;
    m_constant = NumberConstant(*number);
    return Take(length, WqlToken::Constant);
}

WqlToken WqlLexer::ReadText() {
    const wchar_t quote = m_rest.front();
    std::wstring text;
    std::size_t i = 1;
    for (; i < m_rest.size() && m_rest[i] != quote; ++i) {
        if (m_rest[i] == L'\\' && !IsEscapable(m_rest, ++i)) return WqlToken::Invalid;
        if (m_rest[i] == L'\0') return WqlToken::Invalid;
        text += m_rest[i];
    }
    if (i == m_rest.size()) return WqlToken::Invalid;
    m_constant = TextConstant(text);
    return Take(i + 1, WqlToken::Constant);
}

WqlToken WqlLexer::ReadSign() {
    const wchar_t next = m_rest.size() > 1 ? m_rest[1] : L'\0';
    switch (m_rest.front()) {
        case L'*':
            return Take(1, WqlToken::Star);
        case L',':
            return Take(1, WqlToken::Comma);
        case L'(':
            return Take(1, WqlToken::Open);
        case L')':
            return Take(1, WqlToken::Close);
        case L'=':
            return Take(1, WqlToken::Equal);
        case L'!':
            return next == L'=' ? Take(2, WqlToken::NotEqual) : WqlToken::Invalid;
        case L'<':
            if (next == L'>') return Take(2, WqlToken::NotEqual);
            return next == L'=' ? Take(2, WqlToken::LessOrEqual) : Take(1, WqlToken::Less);
        case L'>':
            return next == L'=' ? Take(2, WqlToken::GreaterOrEqual) : Take(1, WqlToken::Greater);
        default:
            return WqlToken::Invalid;
    }
}

WqlToken WqlLexer::Take(std::size_t count, WqlToken token) {
    m_rest.remove_prefix(count);
    return token;
}

}  // namespace quillon::simulation
