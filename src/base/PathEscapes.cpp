#include "base/PathEscapes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/Characters.h"
#include "base/Utf.h"

namespace quillon::base {

namespace {

constexpr std::size_t kEscapeLength = 2;  // units
constexpr std::uint32_t kEscapes = 0x100000;

std::uint32_t UnitAt(std::wstring_view text, std::size_t at) {
    return at < text.size() ? static_cast<std::uint32_t>(text[at]) : 0;
}

bool IsHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

bool IsEnd(std::uint32_t unit) { return unit == '.' || unit == ' '; }

/// The names of devices begin with these.
bool IsInitial(std::uint32_t unit) {
    return unit < 0x80 && std::wstring_view(L"ACLNPaclnp").find(static_cast<wchar_t>(unit)) < 10;
}

bool IsEscaped(std::uint32_t unit) {
    return IsHighSurrogate(unit) || IsLowSurrogate(unit) || IsEnd(unit) || IsInitial(unit);
}

/// COM1 and the like; the superscripts of Latin-1 count as digits.
bool IsPort(std::wstring_view name) {
    constexpr std::wstring_view kDigits = L"0123456789\u00B9\u00B2\u00B3";
    const std::wstring_view kind = name.substr(0, 3);
    return name.size() == 4 && kDigits.find(name[3]) != std::wstring_view::npos &&
           (EqualIgnoringCase<wchar_t>(kind, L"COM") || EqualIgnoringCase<wchar_t>(kind, L"LPT"));
}

/// Whether Windows takes a name for a device, as it does whatever follows a dot or a colon in it.
bool IsDevice(std::wstring_view name) {
    name = name.substr(0, name.find_first_of(L".:"));
    name = name.substr(0, name.find_last_not_of(L' ') + 1);
    constexpr std::wstring_view kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
    return IsPort(name) || std::ranges::any_of(kDevices, [name](std::wstring_view device) {
               return EqualIgnoringCase(name, device);
           });
}

/// Returns the character of the pair that begins there; 0 when none does.
std::uint32_t PairAt(std::wstring_view text, std::size_t at) {
    const std::uint32_t high = UnitAt(text, at), low = UnitAt(text, at + 1);
    if (!IsHighSurrogate(high) || !IsLowSurrogate(low)) return 0;
    return 0x10000 + ((high & 0x3FF) << 10) + (low & 0x3FF);
}

/// Returns the unit that the escape there stands for; 0 when there is none.
std::uint32_t EscapeAt(std::wstring_view text, std::size_t at) {
    const std::uint32_t character = PairAt(text, at);
    return character >= kEscapes && IsEscaped(character - kEscapes) ? character - kEscapes : 0;
}

void AppendEscape(std::wstring& text, std::uint32_t unit) {
    const std::uint32_t bits = kEscapes - 0x10000 + unit;
    text += static_cast<wchar_t>(0xD800 + (bits >> 10));
    text += static_cast<wchar_t>(0xDC00 + (bits & 0x3FF));
}

std::wstring WithEscapes(std::wstring_view text) {
    std::wstring escaped;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::uint32_t unit = UnitAt(text, at);
        const bool isOwnEscape = EscapeAt(text, at) != 0;
        if (PairAt(text, at) != 0 && !isOwnEscape) {
            escaped += text.substr(at++, 2);
        } else if (isOwnEscape) {
            AppendEscape(escaped, unit);
            AppendEscape(escaped, UnitAt(text, ++at));
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            AppendEscape(escaped, unit);
        } else {
            escaped += text[at];
        }
    }
    return escaped;
}

std::string Escaped(std::uint32_t unit) {
    std::wstring text;
    AppendEscape(text, unit);
    return ToUtf8(text);
}

/// Escapes are among the characters from U+100000 on, whose UTF-8 begins with this byte.
bool MayHaveEscape(std::string_view text) { return text.find('\xF4') != std::string_view::npos; }

}  // namespace

std::string PathToUtf8(std::wstring_view path) {
    auto narrow = WideToUtf8(path);
    if (narrow && !MayHaveEscape(*narrow)) return std::move(*narrow);
    return ToUtf8(WithEscapes(path));
}

std::string NameToUtf8(std::wstring_view name) {
    if (name == L"." || name == L"..") return PathToUtf8(name);
    std::string begin, end;
    if (IsDevice(name)) {
        begin = Escaped(UnitAt(name, 0));
        name.remove_prefix(1);
    }
    if (!name.empty() && IsEnd(UnitAt(name, name.size() - 1))) {
        end = Escaped(UnitAt(name, name.size() - 1));
        name.remove_suffix(1);
    }
    return begin + PathToUtf8(name) + end;
}

std::wstring PathToWide(std::string_view path) {
    std::wstring wide = ToWide(path);
    return MayHaveEscape(path) ? WithoutEscapes(wide) : wide;
}

std::wstring WithoutEscapes(std::wstring_view path) {
    std::wstring text;
    for (std::size_t at = 0; at < path.size(); ++at) {
        const std::uint32_t unit = EscapeAt(path, at);
        text += unit == 0 ? path[at] : static_cast<wchar_t>(unit);
        if (unit != 0) at += kEscapeLength - 1;
    }
    return text;
}

bool MustStayAsItIs(std::wstring_view path) {
    for (std::size_t at = 0; at < path.size(); ++at) {
        const std::uint32_t unit = EscapeAt(path, at);
        if (IsEnd(unit) || IsInitial(unit)) return true;
    }
    return false;
}

}  // namespace quillon::base
