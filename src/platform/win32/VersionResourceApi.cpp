#include "platform/VersionResourceApi.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/Utf.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// The resource as the system gives it.
struct VersionResource::Content {
    std::vector<unsigned char> block;
};

namespace {

struct FoundValue {
    const unsigned char* data;
    std::size_t bytes;
};

/// A value by its path in the block. The file tells its length, in units of `unit`
/// bytes, which need not be true.
std::optional<FoundValue> FindValue(const std::vector<unsigned char>& block, const std::wstring& path,
                                    std::size_t unit) {
    void* value = nullptr;
    UINT length = 0;
    if (::VerQueryValueW(block.data(), path.c_str(), &value, &length) == 0 || value == nullptr) return {};
    const auto* const data = static_cast<const unsigned char*>(value);
    const auto room = static_cast<std::size_t>(block.data() + block.size() - data);
    return FoundValue{data, std::min(length * unit, room)};
}

}  // namespace

std::optional<VersionResource> VersionResource::Load(const std::string& path, bool* isThere) {
    const auto widePath = WidePath(path);
    // Any other path is looked for as a library is, not first in the working directory.
    const auto fullPath = widePath ? FullPath(*widePath) : std::nullopt;
    DWORD ignored = 0;
    const DWORD size = fullPath ? ::GetFileVersionInfoSizeW(fullPath->c_str(), &ignored) : 0;
    if (isThere != nullptr) *isThere = size != 0;
    if (!fullPath || size == 0) return std::nullopt;
    Content content{std::vector<unsigned char>(size)};
    if (::GetFileVersionInfoW(fullPath->c_str(), 0, size, content.block.data()) == 0) return std::nullopt;
    return VersionResource(std::make_shared<const Content>(std::move(content)));
}

std::optional<base::FixedVersion> VersionResource::Fixed() const {
    VS_FIXEDFILEINFO info{};
    const auto value = FindValue(m_content->block, L"\\", 1);
    if (!value || value->bytes < sizeof info) return std::nullopt;
    std::memcpy(&info, value->data, sizeof info);
    return base::FixedVersion{info.dwSignature, info.dwFileVersionMS, info.dwFileVersionLS,
                              info.dwProductVersionMS, info.dwProductVersionLS};
}

std::vector<base::VersionTranslation> VersionResource::Translations() const {
    const auto value = FindValue(m_content->block, L"\\VarFileInfo\\Translation", 1);
    if (!value) return {};
    std::vector<base::VersionTranslation> translations(value->bytes / sizeof(base::VersionTranslation));
    for (std::size_t i = 0; i < translations.size(); ++i) {
        std::array<std::uint16_t, 2> pair{};
        std::memcpy(pair.data(), value->data + i * sizeof pair, sizeof pair);
        translations[i] = {pair[0], pair[1]};
    }
    return translations;
}

std::optional<std::wstring> VersionResource::Value(const std::string& table, const char* name) const {
    const auto value =
        FindValue(m_content->block, L"\\StringFileInfo\\" + base::ToWide(table) + L'\\' + base::ToWide(name),
                  sizeof(wchar_t));
    if (!value) return std::nullopt;
    return std::wstring(reinterpret_cast<const wchar_t*>(value->data), value->bytes / sizeof(wchar_t));
}

}  // namespace quillon::platform
