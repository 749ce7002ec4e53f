// Only Linux has these limits, and the signal with which one of them would end the agent.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "examples/RunAgent.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

using testing::HasSubstr;
using FileLimitTest = TempDirTest;

/// The limit is 64 KiB: neither the log nor the store has room, and the last call is answered all the same.
TEST_F(FileLimitTest, AWriteThatTheLimitForbidsFailsAndTheAgentLives) {
    std::string requests =
        R"({"id": 0, "method": "Store.Save", "parameters": {"database": "d", "table": "t",)"
        R"( "columns": "Number", "command": "seq 1 50000"}})"
        "\n";
    constexpr int kCalls = 500;
    for (int id = 1; id <= kCalls; ++id) {
        requests += R"({"id": )" + std::to_string(id) + R"(, "method": "Commands.Run", "parameters": )" +
                    R"({"command": "echo )" + std::string(100, 'x') + "\"}}\n";
    }
    dir.Write("requests", requests);
    const std::string line = AgentCommand({"serve", "--parallel", "1", "--level", "trace", "--log",
                                           dir.Native("log").string(), "--data", dir.Native().string()})
                                 .Get();
    dir.Write("limited",
              "ulimit -f 64\n" + line + " <\"$1/requests\" 2>/dev/null | cat\nexit ${PIPESTATUS[0]}");
    const AgentRun run = RunLine("bash " + dir.Native("limited").string() + ' ' + dir.Native().string());
    EXPECT_EQ(run.exitCode, 0);
    std::istringstream answers(run.output);
    int expected = 0;
    for (std::string answer; std::getline(answers, answer); ++expected) {
        const auto json = nlohmann::json::parse(answer);
        EXPECT_EQ(json["id"], expected);
        EXPECT_EQ(json["code"], expected == 0 ? 3 : 0) << json["message"];
    }
    EXPECT_EQ(expected, kCalls + 1);
    EXPECT_EQ(std::filesystem::file_size(dir.Native("log")), 64U << 10) << "the log did not meet the limit";
}

/// Files wait with open handles for the sync of many: these are put in place when no more can be opened.
TEST_F(FileLimitTest, ADownloadOfManyFilesNeedsFewDescriptors) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer opens pipes of its own to look at memory";
    constexpr const char* kHashOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    constexpr int kFiles = 40;
    std::string list;
    for (int i = 0; i < kFiles; ++i) {
        const std::string name = std::to_string(i);
        dir.Write("source/" + name, "");
        list += '"' + name + "\" ln=0 dt=0 CRC=" + kHashOfNothing + '\n';
    }
    dir.Write("list", list + "; List Complete\n");
    dir.Write("config", R"({"wayfarEnabled": true})");
    const std::string here = dir.Native().string(), url = "file://" + here;
    const std::string line =
        AgentCommand({"run", "Content.Download", "--config", here + "/config", "listUrl=" + url + "/list",
                      "folderUrl=" + url + "/source", "folder=" + here + "/to"})
            .Get();
    dir.Write("limited", "ulimit -n 32\nexec " + line);
    EXPECT_EQ(RunLine("bash " + here + "/limited").exitCode, 0);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Native("to")), {}), kFiles);
}

}  // namespace quillon::test
