#include "quillon/ComInitialization.h"

#include <gmock/gmock.h>

#include <optional>
#include <thread>
#include <vector>

#include "quillon/ComScope.h"
#include "quillon/ErrorHelper.h"
#include "quillon/WindowsSockets.h"
#include "support/RecordingLogger.h"

namespace quillon {

TEST(ComInitialization, AndSocketsStartOnManyThreadsAtOnce) {
    const test::RecordingLogger log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 16; ++i) {
        threads.emplace_back([] {
            const ComInitialization outer;
            const ComScope inner;
            EXPECT_TRUE(inner && ComInitialization::Initialize());
            ComInitialization::Uninitialize();
            EXPECT_TRUE(WindowsSockets::GetInstance()->InitializeSockets());
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    std::optional<ComScope> scope(std::in_place);
    std::thread([&] { scope.reset(); }).join();
    EXPECT_EQ(log.Lines(ICLogger::Level::Fatal).size(), 1U);  // a scope must end where it began
    ComInitialization::Uninitialize();                        // what it left
}

TEST(ErrorHelper, OnlySoftChecksAllowTwoErrors) {
    const test::RecordingLogger log;
    for (const unsigned long status : {0UL, 0x40UL, 0x1000000UL, 0x1000040UL, 1UL}) {
        SCOPED_TRACE(status);
        const bool isAllowed = status == 0x40 || status == 0x1000000;
        EXPECT_EQ(ErrorHelper::AllowTrustError(IAgentConfiguration::Soft, status), isAllowed);
        EXPECT_FALSE(ErrorHelper::AllowTrustError(static_cast<IAgentConfiguration::CRLChecks>(2), status));
    }
    const std::string rest = " error ignored as soft CRLChecks are configured";
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                testing::ElementsAre(" -> CERT_TRUST_REVOCATION_STATUS_UNKNOWN" + rest,
                                     " -> CERT_TRUST_IS_OFFLINE_REVOCATION" + rest));
}

}  // namespace quillon
