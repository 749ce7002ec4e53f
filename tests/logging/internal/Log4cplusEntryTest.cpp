#include "logging/Log4cplusEntry.h"

#include <gmock/gmock.h>

namespace quillon::test {

using Level = ICLogger::Level;

TEST(Log4cplusEntry, LevelsMapBothWays) {
    const std::pair<log4cplus::LogLevel, Level> cases[] = {
        {60'000, Level::Fatal}, {50'000, Level::Fatal}, {49'999, Level::Error}, {40'000, Level::Error},
        {-1, Level::Error},     {39'999, Level::Warn},  {30'000, Level::Warn},  {29'999, Level::Info},
        {20'000, Level::Info},  {19'999, Level::Debug}, {10'000, Level::Debug}, {9'999, Level::Trace},
        {0, Level::Trace},      {-2, Level::Trace}};
    for (const auto& [theirs, ours] : cases) EXPECT_EQ(FromLog4cplusLevel(theirs), ours) << theirs;
    for (int code = 0; code <= 5; ++code)
        EXPECT_EQ(ToLog4cplusLevel(static_cast<Level>(code)), code * 10'000);
    for (int code : {-1, 6, 40'000})
        EXPECT_EQ(ToLog4cplusLevel(static_cast<Level>(code)), std::nullopt) << code;
}

}  // namespace quillon::test
