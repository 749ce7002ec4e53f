#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>

#include "host/Cancellation.h"

namespace quillon::agent {

/// Who is to be told of the agent's shutdown, or of the end of an invocation. The thread that tells of an
/// interrupt may outlive every monitor, so there is one for the process.
class ShutdownCallbacks {
public:
    static ShutdownCallbacks& Instance();

    /// The invocation is that of the calling thread, or null.
    std::uint64_t Add(std::function<void()> callback, const Cancellation* invocation);
    /// Waits for a callback that is running.
    void Remove(std::uint64_t registration);
    /// Calls each once.
    void CallAll();
    /// Calls those of one invocation once.
    void Call(const Cancellation& invocation);

private:
    struct Entry {
        std::function<void()> callback;
        const Cancellation* invocation = nullptr;
    };

    std::mutex m_mutex;
    std::uint64_t m_last = 0;
    std::map<std::uint64_t, Entry> m_entries;
};

}  // namespace quillon::agent
