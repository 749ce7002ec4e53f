#include <gmock/gmock.h>

#include <thread>

#include "quillon/ComInitialization.h"
#include "simulation/com/Com.h"
#include "support/RecordingLogger.h"

namespace quillon {

using simulation::Com;

// The real one hardly ever fails.
TEST(ComFaults, AreLoggedElseWrittenToStandardError) {
    Com& com = simulation::TheCom();
    const struct {
        void (Com::*fail)(std::int32_t);
        std::string text;
        int references;
    } cases[] = {
        {&Com::FailNextInitialize, "Could not initialize COM, failed with: ", 0},
        {&Com::FailNextSecurity, "Could not initialize COM security, failed with: ", 1},
    };
    for (const auto& [fail, text, references] : cases) {
        const std::string message = text + "(-2147221164/0X80040154) Class not registered ";
        SCOPED_TRACE(text);
        std::thread([&com, &message, failure = fail, expected = references] {  // it is per thread
            (com.*failure)(static_cast<std::int32_t>(0x80040154));
            {
                const test::RecordingLogger log;
                const ComInitialization failed;
                EXPECT_THAT(log.Lines(ICLogger::Level::Error), testing::ElementsAre(message));
            }
            EXPECT_EQ(com.References(), expected);
            ComInitialization::Uninitialize();
            (com.*failure)(static_cast<std::int32_t>(0x80040154));
            testing::internal::CaptureStderr();
            EXPECT_FALSE(ComInitialization::Initialize());
            EXPECT_EQ(testing::internal::GetCapturedStderr(), message + "\n");
            ComInitialization::Uninitialize();
            const int calls = com.SecurityCalls();
            const ComInitialization first, second;
            EXPECT_EQ(com.References(), 2);
            EXPECT_EQ(com.SecurityCalls() - calls, 1);  // once a thread
        })
            .join();
    }
}

}  // namespace quillon
