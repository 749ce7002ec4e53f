#include "simulation/audit/Waits.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace quillon::simulation {

namespace {

std::uintptr_t NumberOf(HANDLE handle) { return reinterpret_cast<std::uintptr_t>(handle); }

HANDLE HandleOf(std::uintptr_t number) { return reinterpret_cast<HANDLE>(number); }

}  // namespace

HANDLE Waits::MakeEvent() {
    const std::lock_guard lock(m_mutex);
    m_events[++m_lastHandle] = false;
    return HandleOf(m_lastHandle);
}

void Waits::CloseEvent(HANDLE event) {
    const std::lock_guard lock(m_mutex);
    m_events.erase(NumberOf(event));
}

void Waits::Signal(HANDLE event) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_events.find(NumberOf(event));
    if (found == m_events.end()) return;
    const auto isFree = [&](const auto& entry) {
        return entry.second->event == found->first && !entry.second->isDue && !entry.second->isStopped;
    };
    const auto waiter = std::find_if(m_waiters.begin(), m_waiters.end(), isFree);
    if (waiter == m_waiters.end()) {
        found->second = true;
        return;
    }
    waiter->second->isDue = true;
    m_changed.notify_all();
}

HANDLE Waits::Register(HANDLE event, platform::AuditCalls::WaitCallback callback) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_events.find(NumberOf(event));
    if (found == m_events.end()) return nullptr;
    auto waiter = std::make_shared<Waiter>();
    waiter->event = found->first;
    waiter->callback = callback;
    const auto entry = m_waiters.emplace(++m_lastHandle, waiter).first;
    try {
        std::thread([this, waiter] { Run(waiter); }).detach();  // waits for the mutex
    } catch (...) {
        m_waiters.erase(entry);
        throw;
    }
    waiter->isDue = std::exchange(found->second, false);
    return HandleOf(entry->first);
}

void Waits::Unregister(HANDLE wait) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_waiters.find(NumberOf(wait));
    if (found == m_waiters.end()) return;
    found->second->isStopped = true;
    m_changed.notify_all();
}

void Waits::Run(const std::shared_ptr<Waiter>& waiter) {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return waiter->isDue || waiter->isStopped; });
        if (waiter->isStopped) break;
        waiter->isDue = false;
        waiter->isRunning = true;
        ++m_callbacks;
        m_changed.notify_all();
        lock.unlock();
        waiter->callback(nullptr, 0);
        lock.lock();
        waiter->isRunning = false;
        --m_callbacks;
        m_changed.notify_all();
    }
    std::erase_if(m_waiters, [&](const auto& entry) { return entry.second == waiter; });
    m_changed.notify_all();
}

void Waits::AwaitCallback() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_callbacks > 0; });
}

void Waits::AwaitQuiet() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return IsQuiet(); });
}

bool Waits::IsQuiet() const {
    return std::none_of(m_waiters.begin(), m_waiters.end(), [](const auto& entry) {
        const Waiter& waiter = *entry.second;
        return waiter.isDue || waiter.isRunning || waiter.isStopped;
    });
}

std::size_t Waits::CountEvents() {
    const std::lock_guard lock(m_mutex);
    return m_events.size();
}

std::size_t Waits::CountWaits() {
    const std::lock_guard lock(m_mutex);
    return m_waiters.size();
}

}  // namespace quillon::simulation
