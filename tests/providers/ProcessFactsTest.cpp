#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "quillon/ProcessUtils.h"
#include "quillon/ThreadUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon {

namespace {

constexpr unsigned long kNobody = 0x7FFFFFFE;

/// A child that runs until this object goes.
class RunningChild {
public:
    RunningChild(const std::string& rest, ICLogger& logger)
        : m_command(
              test::ChildCommand("await", {m_dir.Native("started").string(), m_dir.Native("go").string()}) +
              rest),
          m_run(test::CommandOf(m_command, logger)),
          m_thread([this] { ProcessUtils::RunCliCommand(m_run); }) {
        const bool hasStarted = test::AwaitFile(m_dir.Native("started"));
        EXPECT_TRUE(hasStarted);
        while (hasStarted && Id() == 0) std::this_thread::yield();  // it may be ahead of its parent
    }
    ~RunningChild() { End(); }
    void End() {
        if (!m_thread.joinable()) return;
        m_dir.Write("go", "");
        m_thread.join();
    }
    const std::string& Command() const { return m_command; }
    unsigned long Id() const { return std::atomic_ref(m_run->processId).load(); }

private:
    test::TempDir m_dir;
    std::string m_command;
    std::shared_ptr<ProcessUtils::CmdProperties> m_run;
    std::thread m_thread;
};

std::vector<unsigned long> AllIds() {
    std::vector<unsigned long> ids;
    ProcessUtils::EnumerateProcessIds(ids);
    return ids;
}

}  // namespace

TEST(ProcessFacts, ChildIsSeenWithItsCommandLineWhileItRuns) {
    test::RecordingLogger log;
    const std::string rest = R"( plain "" "a \"quoted\" one" "ends in \\" "a, b;c=d" )"
                             "\xC3\xA9";
    RunningChild child(rest, log);
    EXPECT_THAT(AllIds(), testing::Contains(child.Id()));
    std::string line = "before";
    EXPECT_TRUE(ProcessUtils::GetCommandLineForProcess(child.Id(), line));
    EXPECT_EQ(line, child.Command());
    const long id = static_cast<long>(child.Id());
    // The emulated system cannot query a working set.
    EXPECT_GT(ProcessUtils::GetPrivateWorkingSetForProcess(id), test::kWindows ? -1 : 4096);

    child.End();
    EXPECT_THAT(AllIds(), testing::Not(testing::Contains(child.Id())));
    EXPECT_FALSE(ProcessUtils::GetCommandLineForProcess(child.Id(), line));
    EXPECT_EQ(line, "");
    EXPECT_EQ(ProcessUtils::GetPrivateWorkingSetForProcess(id), 0);
}

TEST(ProcessFacts, LongCommandLineIsWhole) {
    test::RecordingLogger log;
    const std::size_t length = test::kWindows ? 30'000 : 65'000;
    const std::string argument = ' ' + std::string(length, 'x');
    const RunningChild child(test::kWindows ? argument : argument + argument + " \"end\\\\ of it\"", log);
    std::string line;
    EXPECT_TRUE(ProcessUtils::GetCommandLineForProcess(child.Id(), line));
    EXPECT_TRUE(line == child.Command()) << line.size();
}

TEST(ProcessFacts, SystemsOwnAndAbsentProcesses) {
    test::RecordingLogger log;
    std::string line = "before";
    for (const unsigned long id : {0UL, 4UL}) {
        SCOPED_TRACE(id);
        EXPECT_TRUE(ProcessUtils::IsSystemProcess(id));
        EXPECT_TRUE(ProcessUtils::GetCommandLineForProcess(id, line));
        // In a container 4 may be any process.
        const bool isNone = std::ifstream("/proc/" + std::to_string(id) + "/cmdline").get() == EOF;
        EXPECT_EQ(line.empty(), test::kWindows || isNone);
    }
    EXPECT_FALSE(ProcessUtils::IsSystemProcess(1));
    EXPECT_FALSE(ProcessUtils::GetCommandLineForProcess(kNobody, line));
    EXPECT_EQ(ProcessUtils::GetPrivateWorkingSetForProcess(nullptr), 0);
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_EQ(ProcessUtils::GetPrivateWorkingSetForProcess(static_cast<long>(kNobody)), 0);
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                testing::ElementsAre("Unable to get a VM_READ handle for pid 2147483646"));
}

TEST(ProcessFacts, PrivateMemoryFollowsWhatIsTouched) {
    if (test::kWindows) GTEST_SKIP() << "the emulated system cannot query a working set";
    constexpr long long kBytes = 64LL << 20;
    const long self = static_cast<long>(ThreadUtils::GetThreadId());
    const long long before = ProcessUtils::GetPrivateWorkingSetForProcess(self);
    const std::vector<char> touched(kBytes, 'x');
    [[maybe_unused]] const char* volatile seen = touched.data();  // a compiler may leave unseen memory out
    EXPECT_GE(ProcessUtils::GetPrivateWorkingSetForProcess(self) - before, kBytes * 9 / 10);
    EXPECT_GE(ProcessUtils::GetPrivateWorkingSetForProcess(reinterpret_cast<HANDLE>(self)), kBytes);
}

TEST(ProcessFacts, OperatingSystemsProductNamesAreKnown) {
    const std::string name = "Microsoft Windows Operating System";
    const std::pair<std::string, bool> cases[] = {
        {name, true},
        {"The microsoft\xC2\xAE windows\xC2\xAE operating system, too", true},
        {"Microsoft1234 \t\n\v\f\r WindowsabcdOperating....  System", true},
        {"Microsoft\n1Windows Operating System", false},
        {"Microsoft 12345Windows Operating System", false},
        {"Microsoft 1 23 Windows Operating System", false},
        {"Microsoft 1  2  3 Windows Operating System", false},
        {"MicroMicrosoft Windows Windows Operating System", false},
        {"Microsoft Microsoft Windows Operating System", true},
        {"MICROSOFT Windows Operating System", false},
        {std::string("Microsoft\0Windows Operating System", 34), true},
        {"", false},
        {"Microsoft" + std::string(10'000'000, ' ') + name.substr(10), true},
        {std::string(10'000'000, ' ') + name, true},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ProcessUtils::IsOsProcess(text), expected) << text.substr(0, 60);
    std::string repeated;
    while (repeated.size() < 10'000'000) repeated += "Microsoft Windows Operating ";
    EXPECT_FALSE(ProcessUtils::IsOsProcess(repeated));
    EXPECT_TRUE(ProcessUtils::IsOsProcess(repeated + "System"));
}

}  // namespace quillon
