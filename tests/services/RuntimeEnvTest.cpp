#include "quillon/RuntimeEnv.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

TEST(RuntimeEnv, KnowsTheEngineByItsTwoTypesAndReleaseForgets) {
    RuntimeEnv::ReleaseInstance();
    IRuntimeEnv* const environment = RuntimeEnv::GetInstance();
    EXPECT_FALSE(environment->IsInitialized());
    environment->SetTesting();
    EXPECT_TRUE(RuntimeEnv::GetInstance()->IsTesting());
    for (const int type : {0, 1, 2, 3, -1}) {
        SCOPED_TRACE(type);
        environment->setEnvType(static_cast<IRuntimeEnv::EnvType>(type));
        EXPECT_EQ(environment->getEnvType(), type);
        EXPECT_EQ(environment->IsInitialized(), type != 3);
        EXPECT_EQ(environment->IsAgentEngineEnv(), type == 1 || type == 2);
    }
    RuntimeEnv::ReleaseInstance();
    EXPECT_FALSE(RuntimeEnv::HaveInstance());
    EXPECT_FALSE(RuntimeEnv::GetInstance()->IsInitialized());
    EXPECT_FALSE(RuntimeEnv::GetInstance()->IsTesting());
    EXPECT_TRUE(RuntimeEnv::HaveInstance());
}

}  // namespace
}  // namespace quillon
