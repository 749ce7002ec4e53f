#include "quillon/ErrorHelper.h"

#include <gmock/gmock.h>

#include "platform/ErrorText.h"

namespace quillon {

TEST(ErrorHelper, TheLastErrorBecomesTheResult) {
    InvocationResult result;
    platform::SetLastErrorCode(5);
    ErrorHelper::SetInvocationResultFromLastError(result);
    EXPECT_EQ(result.resultCode, 3);
    EXPECT_THAT(result.errorMessage, testing::StartsWith("(5/0X5) "));
}

}  // namespace quillon
