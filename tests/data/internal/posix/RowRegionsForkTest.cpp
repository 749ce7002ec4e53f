#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>

#include "data/RowRegions.h"
#include "support/Threads.h"

namespace quillon {

// Only here can a process be copied while its threads hold locks.
TEST(RowRegions, TheChildOfAForkTakesRowsWhateverTheThreadsDid) {
    void* const first = TakeRegionSlot();
    if (first == nullptr) GTEST_SKIP() << "there are no regions with the heap of a sanitizer";
    FreeRegionSlot(first);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::atomic<bool> isOver{false};
    test::Threads threads(2, [&](int) {
        for (int turn = 0; turn < 50'000'000 && !isOver; ++turn) FreeRegionSlot(TakeRegionSlot());
    });
    for (int i = 0; i < 100 && std::chrono::steady_clock::now() < end; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(10);  // ends a child that hangs
            void* const slot = TakeRegionSlot();
            FreeRegionSlot(slot);
            ::_exit(slot != nullptr && TakenRegionSlots() <= 2 ? 0 : 1);
        }
        EXPECT_GT(child, 0);
        if (child < 0) break;
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        if (status != 0) {
            ADD_FAILURE() << "fork " << i << ": " << status;
            break;
        }
    }
    isOver = true;
    threads.Join();
}

}  // namespace quillon
