#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "platform/ProcessApi.h"
#include "support/System.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

TEST(ChildMemory, ChildrenAreLetGoWithoutAny) {
    if (kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    constexpr int kChildren = 8;
    for (int n = 0; n < kChildren; ++n) {
        platform::ProcessRequest request;
        request.command = "sleep 0.1";
        auto child = platform::ChildProcess::Start(request);
        ASSERT_TRUE(child);
        TheRefusedCalls() = {RefusedCalls::Memory, 0, 1'000};
        child.reset();
        const int refused = std::exchange(TheRefusedCalls(), {}).refused;
        EXPECT_EQ(refused, 0);
    }
}

}  // namespace quillon::test
