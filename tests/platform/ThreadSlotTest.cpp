#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/ThreadSlot.h"

namespace quillon::platform {

namespace {

std::atomic<int> ended{0};

const ThreadSlot& CountingSlot() {
    static const ThreadSlot& slot = *new ThreadSlot([](void* value) { ended += *static_cast<int*>(value); });
    return slot;
}

}  // namespace

TEST(ThreadSlot, GivesThePointerOfEachThreadBackWhenItEnds) {
    std::vector<int> values(16);
    std::vector<std::thread> threads;
    int sum = 0;
    for (int i = 0; i < 16; ++i) {
        sum += values[static_cast<std::size_t>(i)] = i + 1;
        threads.emplace_back([&value = values[static_cast<std::size_t>(i)]] {
            EXPECT_EQ(CountingSlot().Get(), nullptr);
            EXPECT_TRUE(CountingSlot().Set(&value));
            EXPECT_EQ(CountingSlot().Get(), &value);
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::thread([] { EXPECT_EQ(CountingSlot().Get(), nullptr); }).join();
    EXPECT_EQ(ended, sum);
    EXPECT_EQ(CountingSlot().Get(), nullptr);
}

}  // namespace quillon::platform
