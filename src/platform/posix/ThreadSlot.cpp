#include "platform/ThreadSlot.h"

#include <pthread.h>

namespace quillon::platform {

ThreadSlot::ThreadSlot(End end) {
    pthread_key_t key{};
    if (::pthread_key_create(&key, end) == 0) m_index = key;
}

void* ThreadSlot::Get() const noexcept { return m_index ? ::pthread_getspecific(*m_index) : nullptr; }

bool ThreadSlot::Set(void* value) const noexcept {
    return m_index && ::pthread_setspecific(*m_index, value) == 0;
}

}  // namespace quillon::platform
