#include "simulation/wmi/WmiPath.h"

#include <algorithm>

#include "base/Characters.h"

namespace quillon::simulation {

namespace {

bool IsSlash(wchar_t c) { return c == L'\\' || c == L'/'; }

bool IsNameUnit(wchar_t c) { return base::IsLetter(c) || base::IsDigit(c) || c == L'_' || c > 0x7F; }

/// Takes the name off the front of `text`; empty when there is none.
std::wstring TakeName(std::wstring_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsNameUnit);
    const auto length = static_cast<std::size_t>(end - text.begin());
    std::wstring name(text.substr(0, length));
    text.remove_prefix(length);
    return name;
}

bool TakeUnit(std::wstring_view& text, wchar_t unit) {
    if (!text.starts_with(unit)) return false;
    text.remove_prefix(1);
    return true;
}

std::optional<std::wstring> TakeQuoted(std::wstring_view& text) {
    const wchar_t quote = text.front();
    std::wstring value;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == quote) {
            text.remove_prefix(i + 1);
            return value;
        }
        if (text[i] == L'\\' && ++i == text.size()) break;
        value += text[i];
    }
    return std::nullopt;
}

std::optional<std::wstring> TakeValue(std::wstring_view& text) {
    if (text.starts_with(L'"') || text.starts_with(L'\'')) return TakeQuoted(text);
    std::wstring value(text.substr(0, text.find(L',')));
    if (value.empty()) return std::nullopt;
    text.remove_prefix(value.size());
    return value;
}

bool ParseKeys(std::wstring_view text, WmiPath& path) {
    do {
        std::wstring name = TakeName(text);
        if (name.empty() || !TakeUnit(text, L'=')) return false;
        auto value = TakeValue(text);
        if (!value) return false;
        path.keys.emplace_back(std::move(name), std::move(*value));
    } while (TakeUnit(text, L','));
    return text.empty();
}

bool ParseInstance(std::wstring_view text, WmiPath& path) {
    if (TakeUnit(text, L'.')) return ParseKeys(text, path);
    if (!TakeUnit(text, L'=')) return false;
    path.isSingleton = text == L"@";
    if (path.isSingleton) return true;
    auto value = TakeValue(text);
    if (!value) return false;
    path.keys.emplace_back(L"", std::move(*value));
    return text.empty();
}

/// Takes \\server off the front. False when it is malformed.
bool TakeServer(std::wstring_view& text, std::optional<std::wstring>& server) {
    if (text.size() < 2 || !IsSlash(text[0]) || !IsSlash(text[1])) return true;
    const auto end = std::find_if(text.begin() + 2, text.end(), IsSlash);
    if (end == text.begin() + 2 || end == text.end()) return false;
    server.emplace(text.begin() + 2, end);
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()) + 1);
    return true;
}

/// Takes what stands in front of the class off.
bool TakeNamespace(std::wstring_view& text, WmiPath& path) {
    std::wstring_view rest = text;
    std::optional<std::wstring> server;
    if (!TakeServer(rest, server)) return false;
    const std::size_t end = rest.find_first_of(L":.=\"'");
    if (end == std::wstring_view::npos || rest[end] != L':') return !server;
    auto nameSpace = ParseWmiNamespace(rest.substr(0, end));
    if (!nameSpace || nameSpace->server) return false;
    path.server = std::move(server);
    path.nameSpace = std::move(nameSpace->nameSpace);
    text = rest.substr(end + 1);
    return true;
}

}  // namespace

std::optional<WmiPath> ParseWmiPath(std::wstring_view text) {
    WmiPath path;
    if (!TakeNamespace(text, path)) return std::nullopt;
    path.className = TakeName(text);
    if (path.className.empty()) return std::nullopt;
    path.isClass = text.empty();
    if (!path.isClass && !ParseInstance(text, path)) return std::nullopt;
    return path;
}

std::optional<WmiNamespacePath> ParseWmiNamespace(std::wstring_view text) {
    WmiNamespacePath path;
    if (!TakeServer(text, path.server)) return std::nullopt;
    path.nameSpace = text;
    std::replace(path.nameSpace.begin(), path.nameSpace.end(), L'/', L'\\');
    const std::wstring bounded = L'\\' + path.nameSpace + L'\\';
    if (bounded.find(L"\\\\") != std::wstring::npos) return std::nullopt;
    return path;
}

bool IsThisHost(std::wstring_view server, std::wstring_view host) {
    return server == L"." || base::EqualIgnoringCase(server, host) ||
           base::EqualIgnoringCase(server, std::wstring_view(L"localhost"));
}

}  // namespace quillon::simulation
