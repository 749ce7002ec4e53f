#include "platform/TextApi.h"

#include <unistd.h>

#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "base/Characters.h"
#include "base/Utf.h"

namespace quillon::platform {

namespace {

/// The environment by upper-case name: names are looked up without regard to the case of ASCII letters.
class Environment {
public:
    Environment() {
        for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
            char* const equals = std::strchr(*entry, '=');
            if (equals != nullptr) m_values.emplace(Key(std::string(*entry, equals)), equals + 1);
        }
    }

    const char* Find(std::string name) const {
        const auto found = m_values.find(Key(std::move(name)));
        return found == m_values.end() ? nullptr : found->second;
    }

private:
    static std::string Key(std::string name) {
        for (char& c : name) c = base::Upper(c);
        return name;
    }

    std::map<std::string, const char*> m_values;
};

/// `narrow` turns a name, and `widen` a value, from and to the text's own units.
template <class Char, class Narrow, class Widen>
std::basic_string<Char> Expand(std::basic_string_view<Char> input, Narrow narrow, Widen widen) {
    constexpr Char kMark = '%';
    constexpr auto kNone = std::basic_string_view<Char>::npos;
    const Environment environment;
    std::basic_string<Char> expanded;
    std::size_t copied = 0;
    std::size_t open = input.find(kMark);
    while (open != kNone) {
        const std::size_t close = input.find(kMark, open + 1);
        if (close == kNone) break;
        const char* const value = environment.Find(narrow(input.substr(open + 1, close - open - 1)));
        if (value == nullptr) {
            open = close;  // which may open the next reference
            continue;
        }
        expanded.append(input.substr(copied, open - copied)).append(widen(value));
        copied = close + 1;
        open = input.find(kMark, copied);
    }
    return expanded.append(input.substr(copied));
}

}  // namespace

std::wstring AnsiToWide(const std::string& text) { return base::ToWide(text); }

std::string WideToAnsi(std::wstring_view text) { return base::ToUtf8(text); }

std::string PathFromWide(std::wstring_view path) { return base::ToUtf8(path); }

std::wstring PathToWide(const std::string& path) { return base::ToWide(path); }

std::wstring_view BstrText(BSTR text) { return {text, SysStringLen(text)}; }

std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) {
    return Expand<wchar_t>(
        text.c_str(), [](std::wstring_view name) { return base::ToUtf8(name); },
        [](const char* value) { return base::ToWide(value); });
}

/// Bytes that are no UTF-8 stay as they are.
std::optional<std::string> ExpandEnvironment(const std::string& text) {
    return Expand<char>(
        text.c_str(), [](std::string_view name) { return std::string(name); },
        [](const char* value) { return value; });
}

}  // namespace quillon::platform
