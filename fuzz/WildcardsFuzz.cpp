#include <cstdint>
#include <string>
#include <string_view>

#include "ExpandedText.h"
#include "Require.h"
#include "base/Utf.h"
#include "platform/native/Wildcards.h"

// A pattern and a name, parted by the first line end. The set of positions against a matcher that goes back,
// on texts short enough for it.
namespace {

constexpr const char* kParts[] = {"*", "?",        ".",        "*.*", "*.", "??", "a",
                                  "A", "\xC3\xA9", "\xC3\x89", "<",   ">",  "\""};

wchar_t Lower(wchar_t unit) { return unit >= L'A' && unit <= L'Z' ? unit + 0x20 : unit; }

/// Says whether the name matches a pattern without a dot and without text beyond ASCII, where nothing but
/// "*" and "?" has a meaning of its own.
bool Matches(std::wstring_view name, std::wstring_view pattern) {
    if (pattern.empty()) return name.empty();
    if (pattern.front() == L'*')
        return Matches(name, pattern.substr(1)) || (!name.empty() && Matches(name.substr(1), pattern));
    if (pattern.front() == L'?') {
        const bool isPassed =
            !name.empty() && name.front() != L'.' && Matches(name.substr(1), pattern.substr(1));
        return isPassed || ((name.empty() || name.front() == L'.') && Matches(name, pattern.substr(1)));
    }
    return !name.empty() && Lower(name.front()) == Lower(pattern.front()) &&
           Matches(name.substr(1), pattern.substr(1));
}

bool IsPlain(std::string_view pattern) {
    return pattern.find_first_of(".<>\"") == std::string_view::npos &&
           pattern.find_first_not_of("*?abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-") ==
               std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = quillon::ExpandedText(data, size > 400 ? 400 : size, kParts);
    const std::size_t cut = text.find('\n');
    const std::string pattern = text.substr(0, cut);
    const std::string name = cut == std::string::npos ? "" : text.substr(cut + 1);
    const bool matches = quillon::platform::MatchesWildcards(name, pattern);
    Require(quillon::platform::MatchesWildcards(name, "*"));
    if (matches) Require(quillon::platform::MatchesWildcards(name, pattern + "*") || pattern.ends_with('.'));
    constexpr std::size_t kLongest = 10;  // the other matcher takes time that doubles with each star
    if (!IsPlain(pattern) || pattern.size() > kLongest || name.size() > 2 * kLongest) return 0;
    if (name.find_first_of("<>\"*?") == std::string::npos)
        Require(matches == Matches(quillon::base::ToWide(name), quillon::base::ToWide(pattern)));
    return 0;
}
