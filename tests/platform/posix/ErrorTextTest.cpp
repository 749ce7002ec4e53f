#include <gmock/gmock.h>

#include "platform/posix/Errno.h"
#include "quillon/StringUtils.h"

namespace quillon::test {

TEST(ErrorText, EveryFailureOfTheSystemHasWords) {
    constexpr int kLast = 133;  // EHWPOISON
    for (int error = 1; error <= kLast; ++error) {
        const auto code = static_cast<std::int32_t>(platform::WindowsCode(error));
        EXPECT_THAT(StringUtils::GetErrorAsString(code), testing::Not(testing::ContainsRegex("unknown|%")))
            << error;
    }
}

}  // namespace quillon::test
