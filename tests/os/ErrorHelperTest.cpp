#include "quillon/ErrorHelper.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

#include "quillon/FileSystemUtils.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"

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

TEST(ErrorHelper, TellsTheLastErrorAsACodeAndLeavesIt) {
    const test::TempDir directory;
    ASSERT_FALSE(FileSystemUtils::EraseFile(directory.Path("missing"), true));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(ErrorHelper::GetLastErrorCode(), 2);
    EXPECT_EQ(FileSystemUtils::ReadContentsOfFile(directory.Write("file", "text")), "text");
    EXPECT_EQ(ErrorHelper::GetLastErrorCode(), 0);
}

TEST(ErrorHelper, TakesAnExceptionThatSaysNothing) {
    struct Silent final : std::exception {
        const char* what() const noexcept override { return nullptr; }
    };
    EXPECT_EQ(ErrorHelper::GetExceptionMessage(Silent()), "");
    const std::runtime_error error("\xC3\xA9");
    EXPECT_EQ(ErrorHelper::GetExceptionMessage(error).data(), error.what());
}

}  // namespace quillon
