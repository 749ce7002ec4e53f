#pragma once

#include <string_view>
#include <utility>

#include "platform/Wbem.h"

namespace quillon::simulation {

enum class WqlToken {
    End,
    Invalid,
    Name,
    Constant,
    Star,
    Comma,
    Open,
    Close,
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    // Words that are no names.
    Select,
    From,
    Where,
    And,
    Or,
    Not,
    Like,
    Is,
    Null,
};

/// Cuts a query into its words, one at a time. The query outlives it.
class WqlLexer {
public:
    explicit WqlLexer(std::wstring_view query) : m_rest(query) { Advance(); }

    [[nodiscard]] WqlToken Token() const { return m_token; }
    /// Returns the text when the token is a Name.
    [[nodiscard]] std::wstring_view Name() const { return m_name; }
    /// Hands out the value when the token is a Constant, once: VT_BSTR, VT_I8, VT_UI8, VT_R8 or VT_BOOL.
    _variant_t TakeConstant() { return std::move(m_constant); }
    /// Reads the next token; End and Invalid stay for ever.
    void Advance();

private:
    WqlToken Read();
    WqlToken ReadWord();
    WqlToken ReadNumber();
    WqlToken ReadText();
    WqlToken ReadSign();
    WqlToken Take(std::size_t count, WqlToken token);

    std::wstring_view m_rest;
    WqlToken m_token = WqlToken::Invalid;
    std::wstring_view m_name;
    _variant_t m_constant;
};

}  // namespace quillon::simulation
