#include "Utils/internal/VersionInformationCache.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace quillon {

TEST(VersionInformationCache, AFileIsReadByOneWhileOthersAreAnswered) {
    auto& cache = VersionInformationCache::Instance();
    const std::string path = "file";
    cache.Clear();
    cache.Store("other", "", 1, {}, false);
    for (int round = 0; round < 200; ++round) {
        cache.Drop(path);
        ASSERT_FALSE(cache.Find(path, "", 1)->information);  // held from here on
        std::thread same([&] {
            const auto found = cache.Find(path, "", 1);  // waits, or comes late
            EXPECT_TRUE(!found || found->information);
        });
        EXPECT_TRUE(cache.Find("other", "", 1)->information);
        cache.Store(path, "", 1, {}, true);
        cache.Release(path);
        same.join();
    }
    cache.Clear();
}

}  // namespace quillon
