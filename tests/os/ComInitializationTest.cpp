#include "quillon/ComInitialization.h"

#include <gmock/gmock.h>

#include <optional>
#include <thread>

#include "quillon/ComScope.h"
#include "quillon/WindowsSockets.h"
#include "support/RecordingLogger.h"
#include "support/Threads.h"

namespace quillon {

TEST(ComInitialization, AndSocketsStartOnManyThreadsAtOnce) {
    const test::RecordingLogger log;
    test::Threads(16, [](int) {
        const ComInitialization outer;
        const ComScope inner;
        EXPECT_TRUE(inner && ComInitialization::Initialize());
        ComInitialization::Uninitialize();
        EXPECT_TRUE(WindowsSockets::GetInstance()->InitializeSockets());
    }).Join();
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    std::optional<ComScope> scope(std::in_place);
    std::thread([&] { scope.reset(); }).join();
    EXPECT_EQ(log.Lines(ICLogger::Level::Fatal).size(), 1U);  // a scope must end where it began
    ComInitialization::Uninitialize();                        // what it left
}

}  // namespace quillon
