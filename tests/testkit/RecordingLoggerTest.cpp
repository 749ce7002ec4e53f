#include "quillon/testkit/RecordingLogger.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <thread>

namespace quillon::testkit {

using testing::ElementsAre;

TEST(RecordingLogger, KeepsEveryEntryWholeAndClobbersErrno) {
    RecordingLogger log;
    errno = 0;
    log.Trace("%s", std::string(300'000, 'x').c_str());
    EXPECT_NE(errno, 0);
    std::thread([&log] { log.Fatal("of a thread, 100 %%"); }).join();
    EXPECT_THAT(log.Lines(), ElementsAre(std::string(300'000, 'x'), "of a thread, 100 %"));
    EXPECT_THAT(log.Lines(ICLogger::Level::Fatal), ElementsAre("of a thread, 100 %"));
    log.Forget();
    log.Info("%ls", L"\xD800");  // has no narrow form in the C locale
    EXPECT_EQ(log.Lines().size(), 1U);
}

}  // namespace quillon::testkit
