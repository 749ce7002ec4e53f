#include "base/OwnFigures.h"

#include <gmock/gmock.h>

#include "logging/internal/RollingLog.h"
#include "support/TempDir.h"

namespace quillon::base {

TEST(OwnFigures, LinesThatCannotBeWrittenAreCounted) {
    const test::TempDir dir;
    const std::uint64_t before = DroppedLogLines();
    test::RollingLog unwritable(dir.Path());  // a folder
    unwritable.Write("lost");
    unwritable.Write("lost too");
    EXPECT_EQ(DroppedLogLines() - before, 2U);
}

TEST(OwnFigures, CachesAreAskedForTheirSizes) {
    static std::uint64_t entries = 1;
    RegisterCache("test", [] { return entries; });
    entries = 3;
    EXPECT_EQ(CacheSizes().back().name, "test");
    EXPECT_EQ(CacheSizes().back().entries, 3U);
}

}  // namespace quillon::base
