#include "platform/ErrorText.h"

#include "base/Utf.h"
#include "platform/win32/WindowsHeaders.h"
#include "quillon/DestructorFunctor.h"

namespace quillon::platform {

namespace {

constexpr DWORD kLanguage = 0x400;  // the user's default

std::optional<std::string> MessageText(DWORD flags, HMODULE module, DWORD code) {
    wchar_t* buffer = nullptr;
    const DWORD length = ::FormatMessageW(flags | FORMAT_MESSAGE_ALLOCATE_BUFFER, module, code, kLanguage,
                                          reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    const DWORD error = ::GetLastError();
    const DestructorFunctor release([&] {
        if (buffer != nullptr) ::LocalFree(buffer);
        ::SetLastError(error);
    });
    if (length == 0 || buffer == nullptr) return std::nullopt;
    return base::ToUtf8({buffer, length});
}

}  // namespace

std::uint32_t LastError() { return ::GetLastError(); }

void SetLastErrorCode(std::uint32_t code) { ::SetLastError(code); }

std::optional<std::string> ErrorCodeText(std::int32_t code) {
    // Without FORMAT_MESSAGE_IGNORE_INSERTS, as the texts have always been asked
    // for: a message that needs arguments has no text.
    return MessageText(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_MAX_WIDTH_MASK, nullptr,
                       static_cast<DWORD>(code));
}

std::optional<std::string> NtstatusText(std::int32_t status) {
    const HMODULE module = ::LoadLibraryW(L"ntdll.dll");
    const DestructorFunctor unload([module] {
        if (module != nullptr) ::FreeLibrary(module);
    });
    return MessageText(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM, module,
                       static_cast<DWORD>(status));
}

}  // namespace quillon::platform
