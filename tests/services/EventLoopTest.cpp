#include "quillon/EventLoop.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <vector>

namespace quillon {
namespace {

constexpr unsigned long kLongest = std::numeric_limits<unsigned long>::max();

TEST(EventLoop, KeepsSignalsUntilTheyAreReset) {
    EventLoop loop;
    EXPECT_FALSE(loop.WaitForSignals(0) || loop.WaitForSignals(1));
    loop.Set(2);
    loop.Set(0x80000004);
    EXPECT_TRUE(loop.WaitForSignals(0) && loop.WaitForSignals(kLongest));
    loop.WaitForSignals();
    EXPECT_EQ(loop.GetSignalSet(), 0x80000006u);
    loop.Reset(0x80000004);
    EXPECT_EQ(loop.GetSignalSet(), 2u);
    loop.ResetAllSignals();
    EXPECT_EQ(loop.GetSignalSet(), 0u);
}

// A deadline that overflowed would end a wait early.
TEST(EventLoop, TheLongestWaitWaits) {
    EventLoop loops[2];
    const auto play = [&loops](int own) {
        for (int i = 0; i < 1'000; ++i) {
            EXPECT_TRUE(loops[own].WaitForSignals(kLongest));
            loops[own].ResetAllSignals();
            loops[1 - own].Set(0);  // wakes without a signal
            loops[1 - own].Set(1);
        }
    };
    loops[0].Set(1);
    std::thread other(play, 1);
    play(0);
    other.join();
}

TEST(EventLoop, ManySettersReachManyWaiters) {
    EventLoop loop;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([&loop] { loop.WaitForSignals(); });
    for (unsigned int bit = 0; bit < 32; ++bit) threads.emplace_back([&loop, bit] { loop.Set(1U << bit); });
    for (auto& thread : threads) thread.join();  // 32 wake-ups for 8 waiters: none stays behind
    EXPECT_EQ(loop.GetSignalSet(), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace quillon
