#include "platform/win32/WidePath.h"

#include "base/PathEscapes.h"
#include "base/Utf.h"
#include "platform/TextApi.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

bool HasNul(const std::string& path) {
    if (path.find('\0') == std::string::npos) return false;
    ::SetLastError(ERROR_INVALID_NAME);
    return true;
}

/// Nothing for a path that the system cannot have; its own answers to one that is too long differ.
std::optional<std::wstring> Converted(const std::string& path) {
    constexpr std::size_t kLongest = 32'767;
    if (HasNul(path)) return std::nullopt;
    auto wide = base::ToWide(path);
    if (wide.size() <= kLongest) return wide;
    ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return std::nullopt;
}

constexpr std::wstring_view kExtended = LR"(\\?\)";

/// With its escapes, of which the system leaves none off.
std::optional<std::wstring> Extended(const std::wstring& path) {
    if (path.starts_with(kExtended)) return path;
    const auto full = FullPath(path);
    if (!full || full->starts_with(kExtended)) return full;  // it was given with slashes
    if (full->starts_with(LR"(\\.\)")) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return std::nullopt;
    }
    return full->starts_with(LR"(\\)") ? LR"(\\?\UNC)" + full->substr(1) : std::wstring(kExtended) + *full;
}

}  // namespace

std::optional<std::wstring> WidePath(const std::string& path) {
    const auto wide = Converted(path);
    if (!wide) return std::nullopt;
    return base::MustStayAsItIs(*wide) ? ExtendedPath(path) : base::WithoutEscapes(*wide);
}

std::optional<std::wstring> WideName(const std::string& name) {
    if (HasNul(name)) return std::nullopt;
    return base::PathToWide(name);
}

std::optional<std::wstring> FullPath(const std::wstring& path) {
    std::wstring full(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        if (length == 0) return std::nullopt;
        const bool fits = length < full.size();
        full.resize(length);
        if (fits) return full;
    }
}

std::optional<std::wstring> ExtendedPath(const std::string& path) {
    const auto wide = Converted(path);
    auto extended = wide ? Extended(*wide) : std::nullopt;
    if (extended) *extended = base::WithoutEscapes(*extended);
    return extended;
}

std::string PathFromWide(std::wstring_view path) { return base::PathToUtf8(path); }

std::wstring PathToWide(const std::string& path) {
    const auto wide = WidePath(path);
    return wide ? *wide : base::PathToWide(path);
}

}  // namespace quillon::platform
