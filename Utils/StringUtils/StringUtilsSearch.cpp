#include <algorithm>
#include <limits>
#include <string_view>

#include "Utils/internal/TextSearch.h"
#include "base/Characters.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using base::EqualIgnoringCase;
using base::IsDigit;

template <class Char>
bool EndsWithText(std::basic_string_view<Char> text, std::basic_string_view<Char> suffix,
                  bool caseSensitive) {
    if (suffix.size() > text.size()) return false;
    const auto end = text.substr(text.size() - suffix.size());
    return caseSensitive ? end == suffix : EqualIgnoringCase(end, suffix);
}

template <class Char>
unsigned long long FindIgnoringCase(std::basic_string_view<Char> haystack,
                                    std::basic_string_view<Char> needle) {
    constexpr auto notFound = std::numeric_limits<unsigned long long>::max();
    if (haystack.empty()) return notFound;
    if (needle.empty()) return 0;
    const std::size_t found = TextSearcher<Char, AnyCase>(needle).Find(haystack, 0);
    return found == haystack.npos ? notFound : found;
}

template <class Case, class Char>
bool Replace(std::basic_string<Char>& text, const std::basic_string<Char>& find,
             const std::basic_string<Char>& replacement, bool firstOnly) {
    if (find.empty()) return false;
    TextSearcher<Char, Case> searcher(find);
    std::size_t found = searcher.Find(text, 0);
    if (found == text.npos) return false;

    std::basic_string<Char> replaced;
    replaced.reserve(text.size());
    std::size_t copied = 0;
    while (found != text.npos) {
        replaced.append(text, copied, found - copied).append(replacement);
        copied = found + find.size();
        found = firstOnly ? text.npos : searcher.Find(text, copied);
    }
    replaced.append(text, copied, text.npos);
    text = std::move(replaced);
    return true;
}

/// Deletes every match at or after `first`, where the first one is. What is kept
/// moves forward and holds no match; a deletion can only make a new one out of the
/// last characters kept, so those, fewer than were deleted, are looked at again.
template <class Case, class Char>
void DeleteFrom(std::basic_string<Char>& text, const std::basic_string<Char>& find, std::size_t first) {
    const IncrementalMatcher<Char, Case> matcher(find);
    const auto matchedBefore = [&](std::size_t end) {
        std::size_t matched = 0;
        for (std::size_t i = end - std::min(end, find.size() - 1); i < end; ++i) {
            matched = matcher.Next(matched, text[i]);
        }
        return matched;
    };
    std::size_t kept = first;
    std::size_t matched = matchedBefore(kept);
    for (std::size_t i = first + find.size(); i < text.size(); ++i) {
        text[kept++] = text[i];
        matched = matcher.Next(matched, text[i]);
        if (matched < find.size()) continue;
        kept -= find.size();
        matched = matchedBefore(kept);
    }
    text.resize(kept);
}

template <class Case, class Char>
bool Delete(std::basic_string<Char>& text, const std::basic_string<Char>& find, bool firstOnly) {
    if (find.empty()) return false;
    const std::size_t found = TextSearcher<Char, Case>(find).Find(text, 0);
    if (found == text.npos) return false;
    if (firstOnly) {
        text.erase(found, find.size());
    } else {
        DeleteFrom<Case>(text, find, found);
    }
    return true;
}

bool EqualNumbers(std::string_view a, std::string_view b) {
    const auto significant = [](std::string_view digits) {
        return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
    };
    return significant(a) == significant(b);
}

bool EqualComponents(const std::string& a, const std::string& b) {
    const auto isNumber = [](const std::string& text) {
        return std::all_of(text.begin(), text.end(), IsDigit<char>);
    };
    return isNumber(a) && isNumber(b) ? EqualNumbers(a, b) : a == b;
}

}  // namespace

bool StringUtils::CompareCaseSensitive(const std::string& a, const std::string& b) { return a == b; }
bool StringUtils::CompareCaseSensitive(const std::wstring& a, const std::wstring& b) { return a == b; }

bool StringUtils::CompareCaseInsensitive(const std::string& a, const std::string& b) {
    return EqualIgnoringCase<char>(a, b);
}

bool StringUtils::CompareCaseInsensitive(const std::wstring& a, const std::wstring& b) {
    return EqualIgnoringCase<wchar_t>(a, b);
}

bool StringUtils::StartsWith(const std::string& text, const std::string& prefix) {
    return text.starts_with(prefix);
}

bool StringUtils::EndsWith(const std::string& text, const std::string& suffix, bool caseSensitive) {
    return EndsWithText<char>(text, suffix, caseSensitive);
}

bool StringUtils::EndsWith(const std::wstring& text, const std::wstring& suffix, bool caseSensitive) {
    return EndsWithText<wchar_t>(text, suffix, caseSensitive);
}

unsigned long long StringUtils::FindCaseInsensitive(const std::string& haystack, const std::string& needle) {
    return FindIgnoringCase<char>(haystack, needle);
}

unsigned long long StringUtils::FindCaseInsensitive(const std::wstring& haystack,
                                                    const std::wstring& needle) {
    return FindIgnoringCase<wchar_t>(haystack, needle);
}

bool StringUtils::CompareDottedVersions(const std::string& a, const std::string& b) {
    std::vector<std::string> left, right;
    SplitByChar(a, '.', left);
    SplitByChar(b, '.', right);
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), EqualComponents);
}

bool StringUtils::IsAllDigits(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit<char>);
}

int StringUtils::StringToInt(const std::string& text, bool* isNumber) {
    const bool digits = IsAllDigits(text);
    if (isNumber != nullptr) *isNumber = digits;
    if (!digits) return 0;
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    std::int64_t value = 0;
    for (const char c : text) value = std::min(value * 10 + (c - '0'), most);
    return static_cast<int>(value);
}

int StringUtils::StringToInt(const std::wstring& text, bool* isNumber) {
    return StringToInt(WideStringToNarrow(text), isNumber);
}

bool StringUtils::ReplaceStringInPlace(std::string& text, const std::string& find,
                                       const std::string& replacement, bool firstOnly) {
    return Replace<ExactCase>(text, find, replacement, firstOnly);
}

bool StringUtils::ReplaceStringInPlace(std::wstring& text, const std::wstring& find,
                                       const std::wstring& replacement, bool firstOnly) {
    return Replace<ExactCase>(text, find, replacement, firstOnly);
}

bool StringUtils::ReplaceStringInPlaceCaseInsensitive(std::string& text, const std::string& find,
                                                      const std::string& replacement, bool firstOnly) {
    return Replace<AnyCase>(text, find, replacement, firstOnly);
}

bool StringUtils::ReplaceStringInPlaceCaseInsensitive(std::wstring& text, const std::wstring& find,
                                                      const std::wstring& replacement, bool firstOnly) {
    return Replace<AnyCase>(text, find, replacement, firstOnly);
}

bool StringUtils::DeleteStringInPlace(std::string& text, const std::string& find, bool firstOnly) {
    return Delete<ExactCase>(text, find, firstOnly);
}

bool StringUtils::DeleteStringInPlace(std::wstring& text, const std::wstring& find, bool firstOnly) {
    return Delete<ExactCase>(text, find, firstOnly);
}

bool StringUtils::DeleteStringInPlaceCaseInsensitive(std::string& text, const std::string& find,
                                                     bool firstOnly) {
    return Delete<AnyCase>(text, find, firstOnly);
}

bool StringUtils::DeleteStringInPlaceCaseInsensitive(std::wstring& text, const std::wstring& find,
                                                     bool firstOnly) {
    return Delete<AnyCase>(text, find, firstOnly);
}

}  // namespace quillon
