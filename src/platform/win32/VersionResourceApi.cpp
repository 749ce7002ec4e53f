#include "platform/VersionResourceApi.h"

#include <algorithm>
#include <array>
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

std::optional<VersionResource> VersionResource::Load(const std::string& path, bool* isThere) {
    const std::wstring widePath = ToWide(path);
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(widePath.c_str(), &ignored);
    if (isThere != nullptr) *isThere = size != 0;
    if (size == 0) return std::nullopt;
    Content content{std::vector<unsigned char>(size)};
    if (::GetFileVersionInfoW(widePath.c_str(), 0, size, content.block.data()) == 0) return std::nullopt;
    return VersionResource(std::make_shared<const Content>(std::move(content)));
}

std::optional<FixedVersion> VersionResource::Fixed() const {
    VS_FIXEDFILEINFO info{};
    UINT bytes = 0;
    const void* const value = FindValue(m_content->block, L"\\", bytes);
    if (value == nullptr || bytes < sizeof info) return std::nullopt;
    std::memcpy(&info, value, sizeof info);
    return FixedVersion{info.dwSignature, info.dwFileVersionMS, info.dwFileVersionLS, info.dwProductVersionMS,
                        info.dwProductVersionLS};
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

std::optional<std::wstring> VersionResource::Value(const std::string& table, const char* name) const {
    UINT units = 0;
    const void* const value =
        FindValue(m_content->block, L"\\StringFileInfo\\" + ToWide(table) + L'\\' + ToWide(name), units);
    if (value == nullptr) return std::nullopt;
    // The file tells the length, which need not be true.
    const auto* const end = m_content->block.data() + m_content->block.size();
    const auto room =
        static_cast<std::size_t>(end - static_cast<const unsigned char*>(value)) / sizeof(wchar_t);
    return std::wstring(static_cast<const wchar_t*>(value), std::min<std::size_t>(units, room));
}

}  // namespace quillon::platform
