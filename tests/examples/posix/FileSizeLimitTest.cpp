#include <gmock/gmock.h>

#include <string>

#include "examples/RunAgent.h"
#include "support/TempDir.h"

namespace quillon::test {
namespace {

// The signal that the limit sends is the end of a process that knows nothing of it.
TEST_F(TempDirTest, AFileSizeLimitEndsNoAgent) {
    const std::string log = dir.Native("log").string();
    const std::string agent = AgentCommand({"run", "Commands.Run", "command=/bin/true", "--log", log}).Get();
    const AgentRun run = RunLine("cmd /c \"ulimit -f 0; exec " + agent + '"');
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output, testing::HasSubstr("Unable to write to file"));
    EXPECT_EQ(dir.Read("log"), "");
}

}  // namespace
}  // namespace quillon::test
