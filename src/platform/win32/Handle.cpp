#include "platform/Handle.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

void FileTraits::Close(Type value) noexcept {
    const DWORD code = ::GetLastError();
    ::CloseHandle(value);
    ::SetLastError(code);
}

}  // namespace quillon::platform
