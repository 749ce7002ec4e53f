#include <algorithm>

#include "base/ByteBlocks.h"
#include "base/Characters.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

// Objects, as a pointer to the function would be called for each unit.
constexpr auto kIsSpace = [](auto c) { return base::IsSpace(c); };
constexpr auto kLower = [](auto c) { return base::Lower(c); };
constexpr auto kUpper = [](auto c) { return base::Upper(c); };

template <class String, class Mapping>
String& Map(String& text, Mapping mapping) {
    std::transform(text.begin(), text.end(), text.begin(), mapping);
    return text;
}

template <class String>
String& MapToLower(String& text) {
    return Map(text, kLower);
}

template <class String>
String& MapToUpper(String& text) {
    return Map(text, kUpper);
}

template <class String, class Unwanted>
String& TrimStart(String& text, Unwanted unwanted) {
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), unwanted));
    return text;
}

template <class String, class Unwanted>
String& TrimEnd(String& text, Unwanted unwanted) {
    text.erase(std::find_if_not(text.rbegin(), text.rend(), unwanted).base(), text.end());
    return text;
}

std::wstring& TrimSpacesBehind(std::wstring& text) { return TrimEnd(text, kIsSpace); }

std::string& TrimSpacesBehind(std::string& text) {
    text.resize(base::SizeWithoutSpacesBehind(text.data(), text.size()));
    return text;
}

template <class String>
String& TrimBoth(String& text) {
    return TrimStart(TrimSpacesBehind(text), kIsSpace);
}

template <class String>
String& TrimCharacter(String& text, typename String::value_type character) {
    return TrimEnd(text, [character](auto c) { return c == character; });
}

template <class String>
String& TrimNewlines(String& text) {
    return TrimEnd(text, [](auto c) { return c == '\n' || c == '\f' || c == '\r'; });
}

template <class String>
String& RemoveSpaces(String& text) {
    std::erase_if(text, kIsSpace);
    return text;
}

}  // namespace

std::string StringUtils::ToLowercase(const std::string& text) {
    std::string lower = text;
    return MapToLower(lower);
}

std::wstring StringUtils::ToLowercase(const std::wstring& text) {
    std::wstring lower = text;
    return MapToLower(lower);
}

std::string StringUtils::ToUppercase(const std::string& text) {
    std::string upper = text;
    return MapToUpper(upper);
}

std::wstring StringUtils::ToUppercase(const std::wstring& text) {
    std::wstring upper = text;
    return MapToUpper(upper);
}

std::string& StringUtils::StringToLowercase(std::string& text) { return MapToLower(text); }
std::wstring& StringUtils::StringToLowercase(std::wstring& text) { return MapToLower(text); }
std::string& StringUtils::StringToUppercase(std::string& text) { return MapToUpper(text); }
std::wstring& StringUtils::StringToUppercase(std::wstring& text) { return MapToUpper(text); }

std::string& StringUtils::LeftTrim(std::string& text) { return TrimStart(text, kIsSpace); }
std::wstring& StringUtils::LeftTrim(std::wstring& text) { return TrimStart(text, kIsSpace); }
std::string& StringUtils::RightTrim(std::string& text) { return TrimSpacesBehind(text); }
std::wstring& StringUtils::RightTrim(std::wstring& text) { return TrimSpacesBehind(text); }
std::string& StringUtils::Trim(std::string& text) { return TrimBoth(text); }
std::wstring& StringUtils::Trim(std::wstring& text) { return TrimBoth(text); }

std::string& StringUtils::TrimQuotes(std::string& text) {
    const auto isQuote = [](char c) { return c == '"'; };
    return TrimStart(TrimEnd(text, isQuote), isQuote);
}

std::string& StringUtils::TrimTrailing(std::string& text, char character) {
    return TrimCharacter(text, character);
}

std::wstring& StringUtils::TrimTrailing(std::wstring& text, wchar_t character) {
    return TrimCharacter(text, character);
}

std::string& StringUtils::TrimAllSpaces(std::string& text) { return RemoveSpaces(text); }
std::wstring& StringUtils::TrimAllSpaces(std::wstring& text) { return RemoveSpaces(text); }

std::string& StringUtils::TrimTrailingNewlineCharacters(std::string& text) { return TrimNewlines(text); }
std::wstring& StringUtils::TrimTrailingNewlineCharacters(std::wstring& text) { return TrimNewlines(text); }

std::string& StringUtils::TrimTrailingPathSeparatorCharacters(std::string& text) {
    return TrimCharacter(text, '\\');
}

std::wstring& StringUtils::TrimTrailingPathSeparatorCharacters(std::wstring& text) {
    return TrimCharacter(text, L'\\');
}

std::string StringUtils::CollapseWhitespace(const std::string& text) {
    std::string collapsed;
    collapsed.reserve(text.size());
    bool pending = false;
    for (const char c : text) {
        if (kIsSpace(c)) {
            pending = true;
            continue;
        }
        if (pending) collapsed.push_back(' ');
        pending = false;
        collapsed.push_back(c);
    }
    if (pending) collapsed.push_back(' ');
    return collapsed;
}

bool StringUtils::Snip(std::string& text, char character, unsigned long long limit) {
    if (limit == 0 || text.size() <= limit) return false;
    const std::size_t last = text.rfind(character, static_cast<std::size_t>(limit) - 1);
    if (last == std::string::npos) return false;
    text.resize(last + 1);
    return true;
}

std::string StringUtils::Truncate(const std::string& text, unsigned long long maximum) {
    if (text.size() <= maximum) return text;
    return text.substr(0, static_cast<std::size_t>(maximum)) + "...";
}

}  // namespace quillon
