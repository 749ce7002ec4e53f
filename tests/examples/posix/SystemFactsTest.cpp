#include "system/SystemFacts.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "support/TempDir.h"

namespace quillon::test {

TEST(SystemFacts, NameTheExecutableThatHasMadeWayForAnotherOne) {
    const TempDir dir;
    const std::filesystem::path program = std::filesystem::canonical(dir.Native()) / "program";
    std::filesystem::copy_file("/bin/sleep", program);
    char name[] = "program", seconds[] = "60";
    char* arguments[] = {name, seconds, nullptr};
    pid_t child = 0;
    ASSERT_EQ(::posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    std::filesystem::remove(program);
    EXPECT_EQ(agent::ReadExecutable(static_cast<unsigned long>(child)), program.string());
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

}  // namespace quillon::test
