#include <gmock/gmock.h>

#include "base/WorkingSet.h"

namespace quillon {

namespace {

constexpr std::uint64_t kShared = 0x100;

/// A working set of every third page shared, which grows by a page a query until `growths` are over.
struct GrowingSet {
    int growths;
    std::uint64_t pages = 3;
    int queries = 0;

    std::uint32_t operator()(std::span<std::uint64_t> buffer) {
        if (++queries > 1 && growths-- > 0) ++pages;
        buffer[0] = pages;
        if (buffer.size() <= pages) return base::kBadLength;
        for (std::uint64_t i = 0; i < pages; ++i) buffer[i + 1] = i % 3 == 0 ? kShared | 0xFFF001 : 0xFFFE00F;
        return 0;
    }
};

}  // namespace

TEST(PrivateWorkingSet, FollowsASetThatGrowsForTwelveQueries) {
    const std::tuple<int, int, long long> cases[] = {
        {0, 2, 2 * 4096}, {1, 3, 2 * 4096}, {11, 13, 9 * 4096}, {12, 13, 0}, {1000, 13, 0}};
    for (const auto& [growths, queries, expected] : cases) {
        GrowingSet set{growths};
        EXPECT_EQ(base::CountPrivateBytes(std::ref(set)), expected) << growths;
        EXPECT_EQ(set.queries, queries) << growths;
    }
}

TEST(PrivateWorkingSet, WhatTheProbeOrTheQueryCannotTellIsZero) {
    const std::tuple<const char*, std::uint32_t, std::uint32_t, std::uint32_t, long long> cases[] = {
        {"the probe succeeds", 0, 1, 0, 0},
        {"the probe fails otherwise", 5, 1, 0, 0},
        {"no entries", 24, 0, 0, 0},
        {"the query fails otherwise", 24, 1, 5, 0},
        {"one page", 24, 1, 0, 4096}};
    for (const auto& [what, probe, count, later, expected] : cases) {
        bool isProbe = true;
        const auto query = [&](std::span<std::uint64_t> buffer) {
            buffer[0] = count;
            return std::exchange(isProbe, false) ? probe : later;
        };
        EXPECT_EQ(base::CountPrivateBytes(query), expected) << what;
    }
}

}  // namespace quillon
