#include <gtest/gtest.h>

#include "os/AuditState.h"
#include "quillon/AuditHolder.h"
#include "simulation/audit/AuditPolicy.h"
#include "support/System.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

TEST(AuditMemory, AHolderIsTakenAwayWithoutMemoryToo) {
    if (kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    simulation::AuditPolicy& policy = simulation::AuditPolicy::Machine();
    bool isIdentifier = false;
    const auto subcategory = UniqueIdentifier::Parse("0cce922b-69ae-11d9-bed3-505054503030", &isIdentifier);
    bool isStarved = true;
    for (int before = 0; isStarved; ++before) {
        SCOPED_TRACE(before);
        policy.SetState(subcategory.ToMsGuid(), 0);
        AuditHolder holder(subcategory);
        ASSERT_TRUE(holder);
        isStarved = Starve(before, [&holder] { holder.Release(); });
        policy.GetWaits().AwaitQuiet();
        EXPECT_EQ(policy.GetWaits().CountWaits(), 0u);
        EXPECT_TRUE(AuditState::Get().m_auditReferenceCounts.empty());
    }
}

}  // namespace quillon::test
