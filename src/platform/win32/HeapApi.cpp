#include "platform/HeapApi.h"

#include <malloc.h>

#include "platform/win32/WindowsHeaders.h"

namespace quillon {

void platform::ReleaseFreeMemory() noexcept {
    ::HeapCompact(reinterpret_cast<HANDLE>(::_get_heap_handle()), 0);  // the heap of operator new
}

void* platform::MapHugePage() noexcept { return nullptr; }
void platform::UnmapHugePage(void*) noexcept {}

}  // namespace quillon
