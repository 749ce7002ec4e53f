#include "platform/VersionResourceApi.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "platform/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// The resource as the system gives it.
struct VersionResource::Content {
    std::vector<unsigned char> block;
};

namespace {

/// A value by its path in the block; `length` in the value's units. Null when there is none.
const void* FindValue(const std::vector<unsigned char>& block, const std::wstring& path, UINT& length) {
    void* value = nullptr;
    return ::VerQueryValueW(block.data(), path.c_str(), &value, &length) != 0 ? value : nullptr;
}

}  // namespace

std::optional<VersionResource> VersionResource::Load(const std::string& path) {
    const std::wstring widePath = ToWide(path);
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(widePath.c_str(), &ignored);
    if (size == 0) return std::nullopt;
    Content content{std::vector<unsigned char>(size)};
    if (::GetFileVersionInfoW(widePath.c_str(), 0, size, content.block.data()) == 0) return std::nullopt;
    return VersionResource(std::make_shared<const Content>(std::move(content)));
}

std::vector<VersionTranslation> VersionResource::Translations() const {
    UINT bytes = 0;
    const void* const value = FindValue(m_content->block, L"\\VarFileInfo\\Translation", bytes);
    if (value == nullptr) return {};
    std::vector<VersionTranslation> translations(bytes / sizeof(VersionTranslation));
    for (std::size_t i = 0; i < translations.size(); ++i) {
        std::array<std::uint16_t, 2> pair{};
        std::memcpy(pair.data(), static_cast<const char*>(value) + i * sizeof pair, sizeof pair);
        translations[i] = {pair[0], pair[1]};
    }
    return translations;
}

std::optional<std::string> VersionResource::Text(VersionTranslation translation, const char* name) const {
    char table[9];
    std::snprintf(table, sizeof table, "%04x%04x", translation.language, translation.codePage);
    UINT units = 0;
    const void* const value =
        FindValue(m_content->block, L"\\StringFileInfo\\" + ToWide(table) + L'\\' + ToWide(name), units);
    if (value == nullptr) return std::nullopt;
    const std::wstring_view text(static_cast<const wchar_t*>(value), units);
    return ToUtf8(text.substr(0, text.find(L'\0')));
}

}  // namespace quillon::platform
