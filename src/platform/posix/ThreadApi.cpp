#include "platform/ThreadApi.h"

#include <pthread.h>
#include <unistd.h>

namespace quillon::platform {

void NameThread(const std::string& name) {
    constexpr std::size_t kLongestName = 15;
    std::size_t length = name.size();
    if (length > kLongestName) {
        length = kLongestName;
        while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
    }
    ::pthread_setname_np(::pthread_self(), name.substr(0, length).c_str());
}

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(::gettid()); }

ThreadSlot::ThreadSlot(End end) {
    pthread_key_t key{};
    if (::pthread_key_create(&key, end) == 0) m_index = key;
}

void* ThreadSlot::Get() const noexcept { return m_index ? ::pthread_getspecific(*m_index) : nullptr; }

bool ThreadSlot::Set(void* value) const noexcept {
    return m_index && ::pthread_setspecific(*m_index, value) == 0;
}

}  // namespace quillon::platform
