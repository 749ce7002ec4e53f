#include <gmock/gmock.h>

#include "quillon/MiscUtils.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

TEST(AgentVersion, IsTheProjects) {
    const auto agent = ProgramFolder() / (kWindows ? "quillon-agent.exe" : "quillon-agent");
    EXPECT_EQ(MiscUtils::GetFileVersionNumber(ToLibraryPath(agent)), "1.0.0.0");
}

}  // namespace quillon::test
