#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <thread>

namespace quillon::test {

/// Repeats `attack`, which returns how often it has swapped something, on a thread of its own, and `work` on
/// this one, and checks that nothing `isTouched`. It takes a second, or a fifth of what the environment
/// gives.
inline void RunAttack(const char* what, const std::function<int()>& attack, const std::function<void()>& work,
                      const std::function<bool()>& isTouched) {
    using Clock = std::chrono::steady_clock;
    constexpr int kMostTries = 10'000'000;
    const char* const chosen = std::getenv("QUILLON_TORTURE_SECONDS");
    const double all = chosen != nullptr ? std::clamp(std::strtod(chosen, nullptr), 0.5, 3600.0) : 5;
    std::atomic<bool> isOver{false};
    std::atomic<int> swaps{0};
    std::thread attacker([&] {
        while (!isOver && swaps < kMostTries) swaps += attack();
    });
    // On a busy machine the attacker may begin late.
    const auto latest = Clock::now() + std::chrono::seconds(60);
    while (swaps == 0 && Clock::now() < latest) std::this_thread::yield();
    const auto end = Clock::now() + std::chrono::duration<double>(all / 5 / QUILLON_TEST_SLOWDOWN);
    int tries = 0;
    for (; tries < kMostTries && Clock::now() < end; ++tries) {
        work();
        if (tries % 256 == 0 && isTouched()) break;
    }
    isOver = true;
    attacker.join();
    EXPECT_FALSE(isTouched()) << what << " after " << tries << " tries";
    EXPECT_GT(swaps, 0);
    std::cout << what << ": " << tries << " tries, " << swaps << " swaps\n";
}

}  // namespace quillon::test
