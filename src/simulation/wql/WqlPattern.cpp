#include "simulation/wql/WqlPattern.h"

#include "base/Characters.h"

namespace quillon::simulation {

namespace {

constexpr auto kNone = std::wstring_view::npos;

bool IsRange(std::wstring_view set) { return set.size() > 2 && (set[1] == L'-' || set[1] == L'='); }

bool SetHas(std::wstring_view set, wchar_t unit) {
    while (!set.empty()) {
        const std::size_t length = IsRange(set) ? 3 : 1;
        if (unit >= base::Lower(set[0]) && unit <= base::Lower(set[length - 1])) return true;
        set.remove_prefix(length);
    }
    return false;
}

class Pattern {
public:
    explicit Pattern(std::wstring_view pattern) : m_pattern(pattern), m_lastClose(pattern.rfind(L']')) {}

    [[nodiscard]] bool IsAtEnd(std::size_t at) const { return at == m_pattern.size(); }
    [[nodiscard]] bool IsAnyText(std::size_t at) const { return !IsAtEnd(at) && m_pattern[at] == L'%'; }

    /// Where the element at `at` ends, when it is one that stands for this unit.
    [[nodiscard]] std::size_t Pass(std::size_t at, wchar_t unit) const {
        if (IsAtEnd(at)) return kNone;
        const wchar_t element = m_pattern[at];
        if (element == L'[' && m_lastClose != kNone && at < m_lastClose)
            return PassSet(at + 1, base::Lower(unit));
        return element == L'_' || base::Lower(element) == base::Lower(unit) ? at + 1 : kNone;
    }

private:
    [[nodiscard]] std::size_t PassSet(std::size_t first, wchar_t unit) const {
        const std::size_t close = m_pattern.find(L']', first);
        std::wstring_view set = m_pattern.substr(first, close - first);
        const bool negated = set.size() > 1 && set[0] == L'^';
        if (negated) set.remove_prefix(1);
        return SetHas(set, unit) != negated ? close + 1 : kNone;
    }

    std::wstring_view m_pattern;
    std::size_t m_lastClose;
};

}  // namespace

bool MatchesLike(std::wstring_view text, std::wstring_view pattern) {
    const Pattern elements(pattern);
    std::size_t at = 0;
    // Only the last '%' needs to be tried with more text: more text for an earlier one changes nothing.
    std::size_t afterAny = kNone;
    std::size_t retryFrom = 0;
    std::size_t i = 0;
    while (i < text.size()) {
        if (elements.IsAnyText(at)) {
            afterAny = ++at;
            retryFrom = i;
            continue;
        }
        const std::size_t next = elements.Pass(at, text[i]);
        if (next != kNone) {
            at = next;
            ++i;
            continue;
        }
        if (afterAny == kNone) return false;
        at = afterAny;
        i = ++retryFrom;
    }
    while (elements.IsAnyText(at)) ++at;
    return elements.IsAtEnd(at);
}

}  // namespace quillon::simulation
