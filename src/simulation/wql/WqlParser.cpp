#include <new>
#include <optional>
#include <utility>

#include "base/Characters.h"
#include "simulation/WbemCode.h"
#include "simulation/wql/WqlLexer.h"
#include "simulation/wql/WqlQuery.h"

namespace quillon::simulation {

/// Reads the condition into postfix order with a stack of operators of its own.
class WqlParser {
public:
    explicit WqlParser(std::wstring_view text) : m_lexer(text) {}

    /// Reads the whole text; nothing when it is not a query.
    std::optional<WqlQuery> Parse() {
        m_isOther = AtWord(L"ASSOCIATORS") || AtWord(L"REFERENCES");
        if (!Take(WqlToken::Select) || !ReadProperties() || !Take(WqlToken::From) ||
            !TakeName(m_query.m_className)) {
            return std::nullopt;
        }
        if (Take(WqlToken::Where) && !ReadCondition()) return std::nullopt;
        return At(WqlToken::End) ? std::optional(std::move(m_query)) : std::nullopt;
    }

    /// Returns whether the text began as a query of a form that is not simulated.
    [[nodiscard]] bool IsOther() const { return m_isOther; }

private:
    using Step = WqlQuery::Step;
    using Kind = Step::Kind;
    using Operator = Step::Operator;

    [[nodiscard]] bool At(WqlToken token) const { return m_lexer.Token() == token; }

    /// A word of those forms is a name elsewhere.
    [[nodiscard]] bool AtWord(std::wstring_view word) const {
        return At(WqlToken::Name) && base::EqualIgnoringCase(m_lexer.Name(), word);
    }

    bool Take(WqlToken token) {
        if (!At(token)) return false;
        m_lexer.Advance();
        return true;
    }

    bool TakeName(std::wstring& name) {
        if (!At(WqlToken::Name)) return false;
        name = m_lexer.Name();
        m_lexer.Advance();
        return true;
    }

    bool ReadProperties() {
        if (Take(WqlToken::Star)) return true;
        do {
            if (!TakeName(m_query.m_properties.emplace_back())) return false;
        } while (Take(WqlToken::Comma));
        return true;
    }

    bool ReadCondition() {
        do {
            while (At(WqlToken::Not) || At(WqlToken::Open)) {
                m_pending.push_back(m_lexer.Token());
                m_lexer.Advance();
            }
            if (!ReadComparison()) return false;
            while (Take(WqlToken::Close)) {
                if (!CloseParenthesis()) return false;
            }
        } while (TakeConnective());
        EmitDownTo(WqlToken::Or);
        return m_pending.empty();  // else a parenthesis is open
    }

    bool TakeConnective() {
        const WqlToken token = m_lexer.Token();
        if (token != WqlToken::And && token != WqlToken::Or) return false;
        EmitDownTo(token);
        m_pending.push_back(token);
        m_lexer.Advance();
        return true;
    }

    bool CloseParenthesis() {
        EmitDownTo(WqlToken::Or);
        if (m_pending.empty()) return false;
        m_pending.pop_back();
        return true;
    }

    static int Strength(WqlToken token) {
        switch (token) {
            case WqlToken::Not:
                return 3;
            case WqlToken::And:
                return 2;
            case WqlToken::Or:
                return 1;
            default:
                return 0;  // a parenthesis
        }
    }

    /// Those that bind at least as strongly as `token`, up to a parenthesis.
    void EmitDownTo(WqlToken token) {
        for (; !m_pending.empty() && Strength(m_pending.back()) >= Strength(token); m_pending.pop_back()) {
            const WqlToken last = m_pending.back();
            Emit(last == WqlToken::Not ? Kind::Not : last == WqlToken::And ? Kind::And : Kind::Or);
        }
    }

    Step& Emit(Kind kind) {
        Step& step = m_query.m_condition.emplace_back();
        step.kind = kind;
        return step;
    }

    bool ReadComparison() {
        std::wstring property;
        return TakeName(property) ? ReadRightSide(std::move(property)) : ReadReversed();
    }

    bool ReadRightSide(std::wstring property) {
        if (Take(WqlToken::Is)) {
            const Kind kind = Take(WqlToken::Not) ? Kind::IsNotNull : Kind::IsNull;
            Emit(kind).property = std::move(property);
            return Take(WqlToken::Null);
        }
        m_isOther = m_isOther || AtWord(L"ISA");
        const bool isLike = At(WqlToken::Like);
        const auto op = TakeOperator();
        auto constant = op ? TakeConstant() : std::nullopt;
        if (!constant || (isLike && constant->vt != VT_BSTR)) return false;
        EmitComparison(std::move(property), *op, std::move(*constant));
        return true;
    }

    /// CONSTANT OPERATOR PROPERTY
    bool ReadReversed() {
        auto constant = TakeConstant();
        const auto op = constant ? TakeOperator() : std::nullopt;
        std::wstring property;
        if (!op || op == Operator::Like || !TakeName(property)) return false;
        EmitComparison(std::move(property), Reversed(*op), std::move(*constant));
        return true;
    }

    void EmitComparison(std::wstring property, Operator op, _variant_t constant) {
        const bool asksForNull =
            constant.vt == VT_NULL && (op == Operator::Equal || op == Operator::NotEqual);
        Step& step = Emit(!asksForNull               ? Kind::Compare
                          : op == Operator::NotEqual ? Kind::IsNotNull
                                                     : Kind::IsNull);
        step.op = op;
        step.property = std::move(property);
        step.constant = std::move(constant);
    }

    std::optional<_variant_t> TakeConstant() {
        std::optional<_variant_t> constant;
        if (At(WqlToken::Null)) constant.emplace().vt = VT_NULL;
        if (At(WqlToken::Constant)) constant = m_lexer.TakeConstant();
        if (constant) m_lexer.Advance();
        return constant;
    }

    std::optional<Operator> TakeOperator() {
        const auto op = OperatorOf(m_lexer.Token());
        if (op) m_lexer.Advance();
        return op;
    }

    static std::optional<Operator> OperatorOf(WqlToken token) {
        switch (token) {
            case WqlToken::Equal:
                return Operator::Equal;
            case WqlToken::NotEqual:
                return Operator::NotEqual;
            case WqlToken::Less:
                return Operator::Less;
            case WqlToken::LessOrEqual:
                return Operator::LessOrEqual;
            case WqlToken::Greater:
                return Operator::Greater;
            case WqlToken::GreaterOrEqual:
                return Operator::GreaterOrEqual;
            case WqlToken::Like:
                return Operator::Like;
            default:
                return std::nullopt;
        }
    }

    static Operator Reversed(Operator op) {
        switch (op) {
            case Operator::Less:
                return Operator::Greater;
            case Operator::LessOrEqual:
                return Operator::GreaterOrEqual;
            case Operator::Greater:
                return Operator::Less;
            case Operator::GreaterOrEqual:
                return Operator::LessOrEqual;
            default:
                return op;
        }
    }

    WqlLexer m_lexer;
    bool m_isOther = false;
    std::vector<WqlToken> m_pending;
    WqlQuery m_query;
};

HRESULT WqlQuery::Parse(std::wstring_view text) {
    *this = WqlQuery();
    try {
        WqlParser parser(text);
        auto query = parser.Parse();
        if (!query) return Code(parser.IsOther() ? WBEM_E_NOT_SUPPORTED : WBEM_E_INVALID_QUERY);
        *this = std::move(*query);
        return S_OK;
    } catch (const std::bad_alloc&) {
        return Code(WBEM_E_OUT_OF_MEMORY);
    }
}

}  // namespace quillon::simulation
