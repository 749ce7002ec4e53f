#include "platform/win32/CurrentUser.h"

#include "platform/win32/LocalMemory.h"
#include "platform/win32/Token.h"
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <sddl.h>

namespace quillon::platform {

std::vector<unsigned char> CurrentUser() {
    const Token token = OpenToken(TOKEN_READ);
    DWORD size = 0;
    if (!token) return {};
    ::GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
    std::vector<unsigned char> user(size);
    if (::GetTokenInformation(token.Get(), TokenUser, user.data(), size, &size) == 0) return {};
    return user;
}

std::wstring CurrentUserId() {
    const std::vector<unsigned char> user = CurrentUser();
    wchar_t* text = nullptr;
    if (user.empty() ||
        ::ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, &text) == 0) {
        return {};
    }
    const LocalMemory owner(text);
    return text;
}

}  // namespace quillon::platform
