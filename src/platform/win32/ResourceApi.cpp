#include "platform/ResourceApi.h"

#include "base/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {
namespace {

HMODULE ThisModule() {
    static const char anchor = 0;
    HMODULE module = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const wchar_t*>(&anchor), &module);
    return module;
}

}  // namespace

std::optional<std::string_view> EmbeddedResource(const char* type, int number) {
    const HMODULE module = ThisModule();
    if (module == nullptr) return std::nullopt;
    const HRSRC entry = ::FindResourceW(module, MAKEINTRESOURCEW(number), base::ToWide(type).c_str());
    if (entry == nullptr) return std::nullopt;
    const HGLOBAL loaded = ::LoadResource(module, entry);
    if (loaded == nullptr) return std::nullopt;
    const DWORD size = ::SizeofResource(module, entry);
    const void* bytes = ::LockResource(loaded);
    if (size == 0 || bytes == nullptr) return std::nullopt;
    return std::string_view(static_cast<const char*>(bytes), size);
}

}  // namespace quillon::platform
