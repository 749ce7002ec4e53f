#include "platform/ThreadSlot.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

ThreadSlot::ThreadSlot(End end) {
    if (const DWORD index = ::FlsAlloc(end); index != FLS_OUT_OF_INDEXES) m_index = index;
}

void* ThreadSlot::Get() const noexcept { return m_index ? ::FlsGetValue(*m_index) : nullptr; }

bool ThreadSlot::Set(void* value) const noexcept { return m_index && ::FlsSetValue(*m_index, value) != 0; }

}  // namespace quillon::platform
