#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>

#include "quillon/DateTimeUtils.h"

namespace quillon {

TEST(LocalTime, FollowsAZoneThatChangesWhileTheProcessRuns) {
    constexpr long long kTime = 1'462'881'600;
    const char* const before = std::getenv("TZ");
    const std::string kept = before == nullptr ? "" : before;
    for (const auto& [zone, expected, noon] : {
             std::tuple("XST0", "Tue May 10 12 : 00:00 2016", "2016-01-01T12:00:00.000Z"),
             std::tuple("XST-5:30", "Tue May 10 17 : 30:00 2016", "2016-01-01T06:30:00.000Z"),
         }) {
        ::_putenv_s("TZ", zone);
        EXPECT_EQ(DateTimeUtils::FormatTimeTAsAscTime(kTime), expected);
        EXPECT_EQ(DateTimeUtils::FormatTimeAsISO8601(DateTimeUtils::YMDHMSToTimePoint(2016, 1, 1, 12, 0, 0)),
                  noon);
    }
    ::_putenv_s("TZ", kept.c_str());
}

}  // namespace quillon
