#pragma once

#include <thread>
#include <vector>

namespace quillon::test {

/// Threads, each of which calls an action with its number, which begins with 0.
class Threads {
public:
    template <class Action>
    Threads(int count, const Action& action) {
        for (int i = 0; i < count; ++i) m_threads.emplace_back(action, i);
    }
    ~Threads() { Join(); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    /// Returns when all have ended.
    void Join() {
        for (std::thread& thread : m_threads) thread.join();
        m_threads.clear();
    }

private:
    std::vector<std::thread> m_threads;
};

}  // namespace quillon::test
