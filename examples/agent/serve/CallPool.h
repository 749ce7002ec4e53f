#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace quillon::agent {

/// Has calls that wait for a thread.
class CallSource {
public:
    virtual ~CallSource() = default;

    /// Returns the next call, and whether further ones wait. Changes nothing when it throws std::bad_alloc.
    /// The call throws nothing.
    virtual std::function<void()> TakeCall(bool& haveMore) = 0;
};

/// Runs the calls of all sources on so many threads, one call of each source in turn.
class CallPool {
public:
    explicit CallPool(std::size_t threads);
    /// Waits for the calls that are running; those that wait are not run.
    ~CallPool();
    CallPool(const CallPool&) = delete;
    CallPool& operator=(const CallPool&) = delete;

    /// Adds a source in which a call waits, and which is not in the pool: it is until TakeCall() says that no
    /// further call waits.
    void Add(std::shared_ptr<CallSource> source);

private:
    void Work();
    std::shared_ptr<CallSource> TakeSource();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<CallSource>> m_sources;
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};

}  // namespace quillon::agent
