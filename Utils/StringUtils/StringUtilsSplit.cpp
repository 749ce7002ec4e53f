#include <algorithm>

#include "Utils/internal/TextSearch.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

template <class String>
std::size_t CountCharacter(const String& text, typename String::value_type character) {
    using Char = typename String::value_type;
    constexpr std::size_t block = 64;  // a fixed count, which compilers turn into vectors
    std::size_t count = 0, i = 0;
    for (; text.size() - i >= block; i += block) {
        Char sum = 0;
        for (std::size_t j = 0; j < block; ++j) sum = static_cast<Char>(sum + (text[i + j] == character));
        count += static_cast<std::size_t>(sum);
    }
    return count + static_cast<std::size_t>(
                       std::count(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(), character));
}

// The pieces are collected apart, so that the text may be one of the old ones.

template <class String>
void SplitAtCharacter(const String& text, typename String::value_type separator,
                      std::vector<String>& pieces) {
    std::vector<String> found;
    found.reserve(CountCharacter(text, separator) + 1);
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(separator, start)) != String::npos; start = end + 1) {
        found.emplace_back(text, start, end - start);
    }
    found.emplace_back(text, start);
    pieces = std::move(found);
}

}  // namespace

void StringUtils::SplitByChar(const std::string& text, char separator, std::vector<std::string>& pieces) {
    SplitAtCharacter(text, separator, pieces);
}

void StringUtils::SplitByChar(const std::wstring& text, wchar_t separator,
                              std::vector<std::wstring>& pieces) {
    SplitAtCharacter(text, separator, pieces);
}

void StringUtils::SplitByString(const std::string& text, const std::string& separator,
                                std::vector<std::string>& pieces, bool skipEmpty) {
    if (separator.empty()) {
        pieces = std::vector<std::string>{text};
        return;
    }
    std::vector<std::string> found;
    TextSearcher<char, ExactCase> searcher(separator);
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(searcher.Find(text, start), text.size());
        if (end > start || !skipEmpty) found.emplace_back(text, start, end - start);
        if (end == text.size()) break;
        start = end + separator.size();
    }
    pieces = std::move(found);
}

std::string StringUtils::StringVecToString(const std::vector<std::string>& pieces, char separator) {
    std::size_t size = pieces.size();
    for (const std::string& piece : pieces) size += piece.size();
    std::string joined;
    joined.reserve(size);
    for (const std::string& piece : pieces) {
        if (&piece != &pieces.front()) joined.push_back(separator);
        joined.append(piece);
    }
    return joined;
}

}  // namespace quillon
