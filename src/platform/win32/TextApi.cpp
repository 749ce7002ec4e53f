#include "platform/TextApi.h"

#include <algorithm>

#include "platform/win32/WindowsHeaders.h"

#include <oleauto.h>  // after <windows.h>

namespace quillon::platform {

namespace {

/// Calls an expansion function first for the size, then for the text.
template <class String, class Expand>
std::optional<String> ExpandWith(Expand expand, const String& text) {
    // The functions work on 32,767 units, NUL included; with more some of their versions cut the
    // text, and others write past their buffer.
    constexpr std::size_t kMost = 32'767;
    if (text.size() >= kMost) return std::nullopt;
    const DWORD size = expand(text.c_str(), nullptr, 0);
    if (size == 0 || size > kMost) return std::nullopt;
    String expanded(static_cast<std::size_t>(size) + 1, 0);
    const DWORD written = expand(text.c_str(), expanded.data(), size + 1);
    if (written == 0 || written > size + 1) return std::nullopt;
    return String(expanded.c_str());
}

}  // namespace

std::string WideToAnsi(std::wstring_view text) {
    const int units = static_cast<int>(text.size());
    const int size = ::WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    if (size <= 0) return {};
    std::string ansi(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, text.data(), units, ansi.data(), size, nullptr, nullptr);
    return ansi;
}

std::wstring AnsiToWide(const std::string& text) {
    const int bytes = static_cast<int>(text.size());
    const int size = ::MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
    if (size <= 0) return {};
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), size);
    return wide;
}

std::wstring_view BstrText(BSTR text) { return {text, ::SysStringLen(text)}; }

std::optional<std::string> ExpandEnvironment(const std::string& text) {
    return ExpandWith(::ExpandEnvironmentStringsA, text);
}

std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) {
    return ExpandWith(::ExpandEnvironmentStringsW, text);
}

std::size_t Utf16SampleSize() { return std::size_t{1} << 30; }

bool LooksLikeUtf16(std::string_view bytes) {
    const std::size_t size = std::min(bytes.size(), Utf16SampleSize());
    return ::IsTextUnicode(bytes.data(), static_cast<int>(size), nullptr) != 0;
}

}  // namespace quillon::platform
