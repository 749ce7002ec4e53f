#include "Utils/VersionInformationCache.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace quillon {

TEST(VersionInformationCache, AFileIsReadByOneWhileOthersAreAnswered) {
    auto& cache = VersionInformationCache::Instance();
    cache.Clear();
    cache.Store("other", "", 1, {}, false);
    for (const std::string& path : std::vector<std::string>(200, "file")) {
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
