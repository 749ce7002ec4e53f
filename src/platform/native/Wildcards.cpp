#include "platform/native/Wildcards.h"

#include <locale.h>
#include <wctype.h>

#include <string>
#include <utility>
#include <vector>

#include "base/Utf.h"

namespace quillon::platform {

namespace {

// The wildcards proper, as the system's search rewrites a pattern before it is
// matched: characters that no file name has there.
constexpr wchar_t kStar = L'*';
constexpr wchar_t kStarToLastDot = L'<';
constexpr wchar_t kOneOrEnd = L'>';
constexpr wchar_t kDotOrEnd = L'"';

wchar_t Upper(wchar_t unit) {
    static const ::locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (unit < 0x80 || unicode == nullptr) return unit >= L'a' && unit <= L'z' ? unit - 0x20 : unit;
    return static_cast<wchar_t>(::towupper_l(static_cast<wint_t>(unit), unicode));
}

std::wstring Upper(std::wstring text) {
    for (wchar_t& unit : text) unit = Upper(unit);
    return text;
}

std::wstring Rewritten(std::wstring pattern) {
    if (pattern == L"*.*") return L"*";
    const bool endsWithDot = pattern.ends_with(L'.');
    while (pattern.ends_with(L'.')) pattern.pop_back();
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isWild = pattern[i] == L'?' || pattern[i] == L'*';
        if (i > 0 && isWild && pattern[i - 1] == L'.') pattern[i - 1] = kDotOrEnd;
        if (i > 0 && pattern[i] == L'.' && pattern[i - 1] == kStar) pattern[i - 1] = kStarToLastDot;
        if (pattern[i] == L'?') pattern[i] = kOneOrEnd;
    }
    if (endsWithDot && pattern.ends_with(kStar)) pattern.back() = kStarToLastDot;
    return pattern;
}

/// The set of pattern positions that a part of the name can have led to: time is
/// their product, whatever the pattern.
class Positions {
public:
    explicit Positions(std::wstring_view pattern) : m_pattern(pattern), m_reached(pattern.size() + 1) {
        m_reached[0] = true;
        SkipStars();
    }

    void Advance(wchar_t unit, bool isLastDot) {
        std::vector<bool> next(m_reached.size());
        for (std::size_t i = 0; i < m_pattern.size(); ++i) {
            if (!m_reached[i]) continue;
            // A star that a "?" before it was skipped for may stand for nothing as well.
            if (IsStar(i)) m_reached[i + 1] = true;
            if (StaysOn(m_pattern[i], isLastDot)) next[i] = true;
            if (PassesOver(m_pattern[i], unit)) next[i + 1] = true;
            // "?" before a dot: a run of them may stand for nothing.
            if (unit == L'.' && m_pattern[i] == kOneOrEnd) m_reached[i + 1] = true;
        }
        m_reached = std::move(next);
        SkipStars();
    }

    bool IsMatch() {
        for (std::size_t i = 0; i < m_pattern.size(); ++i) {
            const bool matchesEnd = m_pattern[i] == kOneOrEnd || m_pattern[i] == kDotOrEnd || IsStar(i);
            if (m_reached[i] && matchesEnd) m_reached[i + 1] = true;
        }
        return m_reached.back();
    }

private:
    bool IsStar(std::size_t i) const { return m_pattern[i] == kStar || m_pattern[i] == kStarToLastDot; }

    static bool StaysOn(wchar_t wildcard, bool isLastDot) {
        return wildcard == kStar || (wildcard == kStarToLastDot && !isLastDot);
    }

    static bool PassesOver(wchar_t expected, wchar_t unit) {
        if (expected == kOneOrEnd) return unit != L'.';
        if (expected == kDotOrEnd) return unit == L'.';
        return expected == unit && expected != kStar && expected != kStarToLastDot;
    }

    void SkipStars() {
        for (std::size_t i = 0; i < m_pattern.size(); ++i) {
            if (m_reached[i] && IsStar(i)) m_reached[i + 1] = true;
        }
    }

    std::wstring_view m_pattern;
    std::vector<bool> m_reached;
};

}  // namespace

bool MatchesWildcards(std::string_view name, std::string_view pattern) {
    if (pattern == "*" || pattern == "*.*") return true;
    const std::wstring expected = Upper(Rewritten(base::ToWide(pattern)));
    const std::wstring units = Upper(base::ToWide(name));
    const std::size_t lastDot = units.rfind(L'.');
    Positions positions(expected);
    for (std::size_t i = 0; i < units.size(); ++i) positions.Advance(units[i], i == lastDot);
    return positions.IsMatch();
}

}  // namespace quillon::platform
