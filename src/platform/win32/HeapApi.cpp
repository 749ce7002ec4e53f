#include "platform/HeapApi.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon {

void platform::ReleaseFreeMemory() noexcept { ::HeapCompact(::GetProcessHeap(), 0); }

}  // namespace quillon
