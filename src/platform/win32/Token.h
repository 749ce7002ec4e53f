#pragma once

#include <string>

#include "platform/Handle.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

struct TokenTraits {
    using Type = HANDLE;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept { FileTraits::Close(value); }
};
using Token = Handle<TokenTraits>;

/// The process's token; none on failure.
inline Token OpenToken(DWORD access) {
    HANDLE token = nullptr;
    return Token(::OpenProcessToken(::GetCurrentProcess(), access, &token) != 0 ? token : nullptr);
}

/// Switches a privilege as SetPrivilege() does, on a token that may be queried and adjusted.
bool SetTokenPrivilege(HANDLE token, const std::wstring& name, bool enable);

}  // namespace quillon::platform
