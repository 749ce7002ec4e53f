#include <gmock/gmock.h>

#include "examples/RunAgent.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using testing::HasSubstr;

constexpr const char* kEnd = kWindows ? ".dll" : ".so";

class ModuleLoader : public TempDirTest {
protected:
    /// Puts one of the modules of the build into the directory.
    void Add(const std::string& name) const {
        std::filesystem::copy_file(std::filesystem::path(QUILLON_TEST_MODULES) / (name + kEnd),
                                   dir.Native(name + kEnd));
    }
    AgentRun Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--modules", dir.Native().string()});
        return RunAgent(arguments);
    }
};

}  // namespace

TEST_F(ModuleLoader, RunsAndDescribesTheMethodsOfALibrary) {
    Add("good");
    AgentRun run = Run({"run", "Sample.Echo", "text=5", "--format", "json"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, testing::StartsWith(R"([{"Text":"5"}])"));
    run = Run({"run", "Sample.Echo"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("Missing parameter 'text'"));
    run = Run({"run", "Sample.Echo", "text=throw"});  // an exception that crosses two libraries
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("Method 'Sample.Echo' threw: thrown in a module"));
    EXPECT_EQ(Run({"run", "Sample.Echo", "text=throw nothing"}).exitCode, 1);
    EXPECT_EQ(Run({"run", "Sample.Echo", "text=fail"}).exitCode, 255);  // not the lowest byte of 256
    run = Run({"methods"});
    EXPECT_THAT(run.output, testing::AllOf(HasSubstr("System.Info\n"),
                                           HasSubstr("Sample.Echo\n  Answers with its parameter.")));
    EXPECT_THAT(run.errors, testing::IsEmpty());
    dir.Write("agent.json", R"({"moduleDirectory": ")" + dir.Native().generic_string() + "\"}");
    run = RunAgent(
        {"run", "Sample.Echo", "text=6", "--format", "csv", "--config", dir.Native("agent.json").string()});
    EXPECT_EQ(run.output, "Text\r\n6") << run.errors;
}

/// The agent lives, names each file, and has the methods of the good one.
TEST_F(ModuleLoader, NamesAndSkipsWhatItCannotLoad) {
    const std::pair<std::string, std::string> cases[] = {
        {"duplicate", "method 'System.Echo' is there already"},
        {"nameless", "'Echo' is no name of a method"},
        {"without_function", "method 'Sample.Nothing' has no function"},
        {"throws", "it threw: no device"},
        {"static_throws", kWindows ? "" : "a constructor of it threw: no driver"},
        {"static_crashes", kWindows ? "loading it ends the process with the code 3"
                                    : "loading it ends the process by the signal 6"},
        {"static_exits", "loading it ends the process"},
        {"no_module", "it made no module"},
        {"old", "it was built for version 0 of the modules' interface, and the agent has version 1"},
        {"no_entry", "QuillonModuleEntry"},
        {"unresolved", "NobodyDefinesThis"},
        {"text", ""},
        {"pipe", "it is no regular file"},
    };
    // On Windows the linker refuses a missing symbol, and no pipe is in a directory.
    const auto isForLinux = [](const std::string& name) {
        return kWindows && (name == "unresolved" || name == "pipe");
    };
    Add("good");
    for (const auto& [name, reason] : cases) {
        if (isForLinux(name)) continue;
        if (name == "text") {
            dir.Write(name + kEnd, "no library");
        } else if (name == "pipe") {  // who opens it waits for a writer
            ASSERT_EQ(RunLine("mkfifo -m 600 " + dir.Native(name + kEnd).string()).exitCode, 0);
        } else {
            Add(name);
        }
    }
    const AgentRun run = Run({"run", "Sample.Echo", "text=7", "--format", "csv"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "Text\r\n7");
    for (const auto& [name, reason] : cases) {
        SCOPED_TRACE(name);
        if (isForLinux(name)) continue;
        EXPECT_THAT(run.errors, HasSubstr(name + kEnd + "' is not loaded: "));
        const bool saysLittle = kWindows && name == "no_entry";  // the system does not name the function
        EXPECT_THAT(run.errors, HasSubstr(saysLittle ? "" : reason));
    }
}

/// For Linux: the emulator makes access lists of modes and cannot be asked for others.
TEST_F(ModuleLoader, RefusesWhatOtherAccountsMayChange) {
    if (kWindows) GTEST_SKIP() << "needs modes";
    namespace fs = std::filesystem;
    Add("good");
    const fs::path file = dir.Native("good.so");
    const auto isLoaded = [this] { return Run({"run", "Sample.Echo", "text=9"}).exitCode == 0; };
    ASSERT_TRUE(isLoaded());
    for (const fs::path& path : {file, dir.Native()}) {
        for (const fs::perms bit : {fs::perms::group_write, fs::perms::others_write}) {
            fs::permissions(path, bit, fs::perm_options::add);
            EXPECT_FALSE(isLoaded()) << path;
            fs::permissions(path, bit, fs::perm_options::remove);
        }
    }
    fs::create_directories(dir.Native("open/modules"));
    fs::rename(file, dir.Native("open/modules/good.so"));
    fs::permissions(dir.Native("open"), fs::perms::others_write, fs::perm_options::add);
    const AgentRun run =
        RunAgent({"run", "Sample.Echo", "text=9", "--modules", dir.Native("open/modules").string()});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("/open may be written by other accounts"));
}

}  // namespace quillon::test
