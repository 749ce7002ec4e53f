#pragma once

#include <chrono>
#include <new>
#include <thread>

namespace quillon::agent {

/// Does something as often as there is no memory for it, with a pause in between, and returns what it gives:
/// a client that waits is served later, and no call and no answer is lost. What is done must change nothing
/// when it throws std::bad_alloc.
template <class Action>
auto AwaitMemory(Action action) -> decltype(action()) {
    constexpr std::chrono::milliseconds kPause{10};
    for (;;) {
        try {
            return action();
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(kPause);
        }
    }
}

}  // namespace quillon::agent
