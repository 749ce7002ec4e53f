#include "host/ShutdownCallbacks.h"

#include <utility>

namespace quillon::agent {

ShutdownCallbacks& ShutdownCallbacks::Instance() {
    static ShutdownCallbacks& callbacks = *new ShutdownCallbacks;
    return callbacks;
}

std::uint64_t ShutdownCallbacks::Add(std::function<void()> callback, const Cancellation* invocation) {
    const std::lock_guard lock(m_mutex);
    m_entries.emplace(++m_last, Entry{std::move(callback), invocation});
    return m_last;
}

void ShutdownCallbacks::Remove(std::uint64_t registration) {
    const std::lock_guard lock(m_mutex);
    m_entries.erase(registration);
}

void ShutdownCallbacks::CallAll() {
    const std::lock_guard lock(m_mutex);
    for (const auto& [registration, entry] : std::exchange(m_entries, {})) entry.callback();
}

void ShutdownCallbacks::Call(const Cancellation& invocation) {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_entries, [&invocation](const auto& item) {
        if (item.second.invocation != &invocation) return false;
        item.second.callback();
        return true;
    });
}

}  // namespace quillon::agent
