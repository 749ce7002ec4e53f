#include "examples/Emulator.h"

#include <windows.h>

namespace quillon::test {

bool IsEmulated() {
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace quillon::test
