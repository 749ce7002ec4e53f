#include "platform/ProcessApi.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <system_error>

#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "providers/CommandOutput.h"
#include "providers/CommandRun.h"
#include "support/ChildMain.h"
#include "support/CommandChild.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using platform::ChildProcess;
using std::chrono::milliseconds;
using std::string_literals::operator""s;

TEST(ProcessApi, WaitsForTheProcessTheEventOrTheLimit) {
    const TempDir dir;
    const platform::EventHandle event = platform::CreateAutoResetEvent();
    const std::vector<std::string> files = {dir.Native("started").string(), dir.Native("go").string()};
    auto child = ChildProcess::Start({.command = ChildCommand("await", files), .workingDirectory = {}});
    ASSERT_TRUE(child);
    EXPECT_EQ(child->Wait(event, milliseconds(1)), platform::kWaitTimeout);
    ASSERT_TRUE(platform::SignalEvent(event));
    EXPECT_EQ(child->Wait(event, std::nullopt), platform::kWaitEvent);
    EXPECT_EQ(child->Wait(event, milliseconds(0)), platform::kWaitTimeout);  // reset by the wait
    dir.Write("go", "");
    EXPECT_EQ(child->Wait(event, std::nullopt), platform::kWaitProcess);
    ASSERT_TRUE(platform::SignalEvent(event));
    EXPECT_EQ(child->Wait(event, std::nullopt), platform::kWaitProcess);
    if (!kWindows) {  // refused on Windows too, but not by the emulator
        EXPECT_EQ(platform::KillProcess(child->Id(), -5, platform::KillScope::Process),
                  platform::KillResult::NotKilled);
        EXPECT_EQ(platform::LastError(), 5u);
    }
    EXPECT_EQ(child->ExitStatus(), 7);
}

TEST(ProcessApi, SaysWhyAProgramCannotBeStarted) {
    EXPECT_FALSE(ChildProcess::Start({.command = "no-such-program-here", .workingDirectory = {}}));
    EXPECT_EQ(platform::LastError(), 2u);
    EXPECT_FALSE(
        ChildProcess::Start({.command = ChildCommand("where"), .workingDirectory = "C:\\no such folder"}));
    EXPECT_EQ(platform::LastError(), 267u);
}

TEST(ProcessApi, KillsNoGroupsAndNobodyUnknown) {
    for (const std::uint32_t id : {0u, 0xFFFFFFFFu, 0x80000000u}) {
        EXPECT_EQ(platform::KillProcess(id, -5, platform::KillScope::Tree), platform::KillResult::NotOpened);
        EXPECT_EQ(platform::LastError(), 87u);
    }
}

TEST(ProcessApi, AChildInheritsItsThreeHandlesAndNoSignalSettings) {
    if (kWindows) GTEST_SKIP() << "descriptors and signals are counted through /proc";
    RecordingLogger log;
    const TempDir dir;
    dir.Write("inherited", "");
    const auto props = CommandOf(ChildCommand("descriptors"), log);
    const std::ifstream inheritable(dir.Native("inherited"));
    const auto old = std::signal(SIGINT, SIG_IGN);
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_EQ(props->outputTable.GetFirstRow()->Get("Output").GetStringValue(), "0");
    EXPECT_EQ(ProcessUtils::RunCliCommand(CommandOf("cmd /c kill -2 $$", log)), 128 + 2);
    std::signal(SIGINT, old);
}

TEST(ProcessApi, LeavesNoZombies) {
    if (kWindows) GTEST_SKIP() << "processes leave none on Windows";
    const TempDir dir;
    const std::string ended = dir.Native("ended").string();
    std::uint32_t id = 0;
    {
        const auto child =
            ChildProcess::Start({.command = ChildCommand("await", {ended, ended}), .workingDirectory = {}});
        ASSERT_TRUE(child);
        id = child->Id();
    }
    const auto entry = std::filesystem::path("/proc") / std::to_string(id);
    while (std::filesystem::exists(entry)) {
        ASSERT_TRUE(ChildProcess::Start(
            {.command = "true", .workingDirectory = {}}));  // letting one go reaps the others
    }
}

TEST(CommandRun, RunsOutOfHandlesInAnOrderlyWay) {
    if (kWindows) GTEST_SKIP() << "the number of handles has no limit on Windows";
    if (kSanitized) GTEST_SKIP() << "the sanitizer itself fails without descriptors";
    RecordingLogger log;
    const auto props = CommandOf("cmd /c ulimit -n 40; " + ChildCommand("starved"), log);
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    // No event, no output file or process, and then enough.
    EXPECT_THAT(props->outputTable.GetFirstRow()->Get("Output").GetStringValue(),
                testing::MatchesRegex("-3 (1 )+(0 )*0"));
}

TEST(CommandRun, ReportsThatNoThreadIsToBeHad) {
    const std::pair<std::errc, std::string> cases[] = {
        {std::errc::resource_unavailable_try_again, "no thread resources available"},
        {std::errc::invalid_argument,
         "system error: " + std::make_error_code(std::errc::invalid_argument).message()}};
    for (const auto& c : cases) {
        RecordingLogger log;
        const auto props = CommandOf("x", log);
        const auto start = [&c](const auto&) -> std::thread {
            throw std::system_error(std::make_error_code(c.first));
        };
        EXPECT_EQ(RunCommand(props, start), -3);
        EXPECT_THAT(log.Lines(), testing::ElementsAre("Cannot run command 'x' because " + c.second));
        EXPECT_EQ(props->abortEvent, nullptr);
        EXPECT_EQ(props->resultCode, -4);
    }
}

TEST(CommandOutput, LinesLoseTheirEndsOnly) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {"a\r\nb", {"a", "b"}},
        {"\n\nx", {"", "", "x"}},
        {"a\v\f\r\r\n \tb ", {"a\v", " \tb "}},
        {"a\0b\nc"s, {"a\0b"s, "c"}},
    };
    for (const auto& [text, expected] : cases) {
        DataTable table;
        AddOutputRows(text, 4, true, table);
        std::vector<std::string> lines;
        for (const VariantList& row : table) {
            EXPECT_EQ(row.Get("LineNumber").GetLongLongValue(), static_cast<long long>(lines.size()));
            EXPECT_EQ(row.Get("ExitCode").GetLongLongValue(), 4);
            lines.push_back(row.Get("Output").GetStringValue());
        }
        EXPECT_EQ(lines, expected);
    }
}

}  // namespace

}  // namespace quillon::test
