#include "quillon/ErrorHelper.h"

#include <gmock/gmock.h>

#include <string>

#include "support/RecordingLogger.h"

namespace quillon {

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
