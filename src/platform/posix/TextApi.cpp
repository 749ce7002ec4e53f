#include "platform/TextApi.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <map>
#include <string>

#include "base/Utf.h"

namespace quillon::platform {

namespace {

/// Windows-1252, bytes 0x80 to 0x9F; those without a character keep their value.
constexpr std::array<wchar_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char AnsiByte(wchar_t unit) {
    if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) return static_cast<char>(unit);
    const auto* const found = std::find(kHighControls.begin(), kHighControls.end(), unit);
    return found == kHighControls.end() ? '?' : static_cast<char>(0x80 + (found - kHighControls.begin()));
}

/// The environment by upper-case name: names are looked up without regard to case.
class Environment {
public:
    Environment() {
        for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
            char* const equals = std::strchr(*entry, '=');
            if (equals != nullptr) m_values.emplace(Key(std::string(*entry, equals)), equals + 1);
        }
    }

    const char* Find(std::wstring_view name) const {
        const auto found = m_values.find(Key(base::ToUtf8(name)));
        return found == m_values.end() ? nullptr : found->second;
    }

private:
    static std::string Key(std::string name) {
        for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return name;
    }

    std::map<std::string, const char*> m_values;
};

}  // namespace

std::wstring AnsiToWide(const std::string& text) {
    std::wstring wide;
    wide.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        wide.push_back(byte >= 0x80 && byte < 0xA0 ? kHighControls[byte - 0x80U] : wchar_t{byte});
    }
    return wide;
}

std::string WideToAnsi(std::wstring_view text) {
    std::string ansi;
    ansi.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        ansi.push_back(AnsiByte(text[i]));
        const bool pair =
            i + 1 < text.size() && (text[i] & ~0x3FF) == 0xD800 && (text[i + 1] & ~0x3FF) == 0xDC00;
        if (pair) ++i;  // one character, one '?'
    }
    return ansi;
}

std::wstring_view BstrText(BSTR text) { return {text, SysStringLen(text)}; }

std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) {
    const Environment environment;
    const std::wstring_view input = text.c_str();
    std::wstring expanded;
    std::size_t copied = 0;
    std::size_t open = input.find(L'%');
    while (open != std::wstring_view::npos) {
        const std::size_t close = input.find(L'%', open + 1);
        if (close == std::wstring_view::npos) break;
        const char* const value = environment.Find(input.substr(open + 1, close - open - 1));
        if (value == nullptr) {
            open = close;  // which may open the next reference
            continue;
        }
        expanded.append(input.substr(copied, open - copied)).append(base::ToWide(value));
        copied = close + 1;
        open = input.find(L'%', copied);
    }
    return expanded.append(input.substr(copied));
}

std::optional<std::string> ExpandEnvironment(const std::string& text) {
    const auto expanded = ExpandEnvironment(AnsiToWide(text));
    return expanded ? std::optional(WideToAnsi(*expanded)) : std::nullopt;
}

}  // namespace quillon::platform
