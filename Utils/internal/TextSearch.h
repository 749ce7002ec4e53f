#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "base/ByteBlocks.h"
#include "base/Characters.h"

namespace quillon {

struct ExactCase {
    template <class Char>
    static constexpr Char Fold(Char c) {
        return c;
    }
    template <class Char>
    static constexpr Char OtherCase(Char c) {
        return c;
    }
};

struct AnyCase {
    template <class Char>
    static constexpr Char Fold(Char c) {
        return base::Upper(c);
    }
    template <class Char>
    static constexpr Char OtherCase(Char c) {
        return base::Upper(c) == c ? base::Lower(c) : base::Upper(c);
    }
};

/// Knuth-Morris-Pratt matching, one character at a time.
template <class Char, class Case>
class IncrementalMatcher {
public:
    using View = std::basic_string_view<Char>;

    /// `needle` is not empty and outlives the matcher.
    explicit IncrementalMatcher(View needle) : m_needle(needle), m_border(needle.size() + 1) {
        for (std::size_t i = 1; i < needle.size(); ++i) m_border[i + 1] = Next(m_border[i], needle[i]);
    }

    /// The length of the needle's beginning that a text ends in once `c` has been
    /// appended, when it ended in `matched` (less than the whole needle) before.
    std::size_t Next(std::size_t matched, Char c) const {
        while (matched > 0 && !Equal(m_needle[matched], c)) matched = m_border[matched];
        return Equal(m_needle[matched], c) ? matched + 1 : 0;
    }

private:
    static bool Equal(Char a, Char b) { return Case::Fold(a) == Case::Fold(b); }

    View m_needle;
    std::vector<std::size_t> m_border;
};

/// Finds a needle any number of times, in time linear in what is searched. Most
/// texts are skipped by looking at the needle's first and last characters only;
/// where comparing at such places turns out dear, the matcher takes over.
template <class Char, class Case>
class TextSearcher {
public:
    using View = std::basic_string_view<Char>;

    /// `needle` is not empty and outlives the searcher.
    explicit TextSearcher(View needle) : m_needle(needle) {}

    /// Index of the first match at or after `from`, npos when there is none.
    std::size_t Find(View text, std::size_t from) {
        if (text.size() < m_needle.size()) return View::npos;
        const std::size_t last = text.size() - m_needle.size();
        while (!m_matcher) {
            const std::size_t at = NextCandidate(text, from, last);
            if (at == View::npos) return View::npos;
            m_allowance += (at - from) + 8;
            from = at;
            if (Matches(text, at)) return at;
            ++from;
        }
        return FindBy(*m_matcher, text, from);
    }

private:
    std::size_t NextCandidate(View text, std::size_t from, std::size_t last) const {
        const Char first = m_needle.front(), firstOther = Case::OtherCase(first);
        const Char end = m_needle.back(), endOther = Case::OtherCase(end);
        const Char* const heads = text.data();
        const Char* const tails = heads + (m_needle.size() - 1);
        if constexpr (sizeof(Char) == 1) {
            const std::size_t at =
                base::FindBoth(heads, {first, firstOther}, tails, {end, endOther}, from, last + 1);
            return at > last ? View::npos : at;
        }
        for (std::size_t i = from; i <= last; ++i) {
            const bool head = (heads[i] == first) | (heads[i] == firstOther);
            if (head & ((tails[i] == end) | (tails[i] == endOther))) return i;
        }
        return View::npos;
    }

    bool Matches(View text, std::size_t at) {
        std::size_t i = 0;
        while (i < m_needle.size() && Case::Fold(text[at + i]) == Case::Fold(m_needle[i])) ++i;
        if (i == m_needle.size()) return true;
        if (i > m_allowance) m_matcher.emplace(m_needle);
        m_allowance -= i < m_allowance ? i : m_allowance;
        return false;
    }

    std::size_t FindBy(const IncrementalMatcher<Char, Case>& matcher, View text, std::size_t from) const {
        std::size_t matched = 0;
        for (std::size_t i = from; i < text.size(); ++i) {
            matched = matcher.Next(matched, text[i]);
            if (matched == m_needle.size()) return i + 1 - matched;
        }
        return View::npos;
    }

    View m_needle;
    /// Characters that may yet be compared in vain: earned by skipping.
    std::size_t m_allowance = 1024;
    std::optional<IncrementalMatcher<Char, Case>> m_matcher;
};

}  // namespace quillon
