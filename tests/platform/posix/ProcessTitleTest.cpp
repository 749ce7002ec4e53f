#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <span>
#include <sstream>
#include <string>

#include "quillon/ProcessUtils.h"

namespace quillon::test {

namespace {

/// The memory that the kernel takes for this process's arguments.
std::span<char> OwnArguments() {
    std::ifstream file("/proc/self/stat");
    std::string line, field;
    std::getline(file, line);
    std::istringstream fields(line.substr(line.rfind(')')));  // the 2nd field ends there
    std::uintptr_t begin = 0, end = 0;
    for (int number = 2; number <= 47; ++number) fields >> field;
    fields >> begin >> end;
    return {reinterpret_cast<char*>(begin), reinterpret_cast<char*>(end)};
}

}  // namespace

TEST(ProcessTitle, ZerosBehindItAreNoArguments) {
    const std::span<char> own = OwnArguments();
    const std::string kept(own.begin(), own.end());
    const std::string title = "t: own";
    ASSERT_GT(own.size(), title.size() + 2);
    const std::pair<std::string, std::string> cases[] = {{title, "\"t: own\""}, {"", ""}};
    for (const auto& [shown, expected] : cases) {
        std::fill(own.begin(), own.end(), '\0');
        std::copy(shown.begin(), shown.end(), own.begin());
        std::string line;
        const bool isRead =
            ProcessUtils::GetCommandLineForProcess(static_cast<unsigned long>(::getpid()), line);
        std::copy(kept.begin(), kept.end(), own.begin());
        EXPECT_TRUE(isRead);
        EXPECT_EQ(line, expected);
    }
}

}  // namespace quillon::test
