#include "serve/CallPool.h"

#include <exception>
#include <utility>

#include "quillon/ThreadUtils.h"
#include "serve/AwaitMemory.h"

namespace quillon::agent {

CallPool::CallPool(std::size_t threads) {
    m_threads.reserve(threads);
    try {
        while (m_threads.size() < threads) m_threads.emplace_back([this] { Work(); });
    } catch (const std::exception&) {  // no thread, or no memory for one
        if (m_threads.empty()) throw;  // with fewer threads calls wait longer
    }
}

CallPool::~CallPool() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) thread.join();
}

void CallPool::Add(std::shared_ptr<CallSource> source) {
    {
        const std::lock_guard lock(m_mutex);
        m_sources.push_back(std::move(source));
    }
    m_changed.notify_one();
}

void CallPool::Work() {
    ThreadUtils::SetThreadName("call");
    while (const std::shared_ptr<CallSource> source = TakeSource()) {
        bool haveMore = false;
        const std::function<void()> call = AwaitMemory([&] { return source->TakeCall(haveMore); });
        if (haveMore) AwaitMemory([&] { Add(source); });
        call();
    }
}

std::shared_ptr<CallSource> CallPool::TakeSource() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isEnding || !m_sources.empty(); });
    if (m_isEnding) return nullptr;
    std::shared_ptr<CallSource> source = std::move(m_sources.front());
    m_sources.pop_front();
    return source;
}

}  // namespace quillon::agent
