#include "platform/ProcessApi.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <system_error>

#include "platform/ErrorText.h"
#include "providers/CommandOutput.h"
#include "providers/CommandRun.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using platform::ChildProcess;
using std::chrono::milliseconds;
using testing::ElementsAre;

platform::ProcessRequest RequestOf(const std::string& command) {
    platform::ProcessRequest request;
    request.command = command;
    return request;
}

TEST(ProcessApi, WaitsForTheProcessTheEventOrTheLimit) {
    const TempDir dir;
    const platform::EventHandle event = platform::CreateAutoResetEvent();
    auto child = ChildProcess::Start(
        RequestOf(ChildCommand("await", {dir.Native("started").string(), dir.Native("go").string()})));
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
    EXPECT_FALSE(ChildProcess::Start(RequestOf("no-such-program-here")));
    EXPECT_EQ(platform::LastError(), 2u);
    platform::ProcessRequest request = RequestOf(ChildCommand("copy"));
    request.workingDirectory = "C:\\no such folder";
    EXPECT_FALSE(ChildProcess::Start(request));
    EXPECT_EQ(platform::LastError(), 267u);
}

TEST(ProcessApi, KillsNoGroupsAndNobodyUnknown) {
    for (const std::uint32_t id : {0u, 0xFFFFFFFFu, 0x80000000u}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(platform::KillProcess(id, -5, platform::KillScope::Tree), platform::KillResult::NotOpened);
        EXPECT_EQ(platform::LastError(), 87u);
    }
}

TEST(ProcessApi, AChildInheritsItsThreeHandlesAndNoSignalSettings) {
    if (kWindows) GTEST_SKIP() << "descriptors and signals are counted through /proc";
    RecordingLogger log;
    const std::ifstream inheritable("/dev/null");
    const auto props = CommandOf("ls /proc/self/fd", log);
    const auto old = std::signal(SIGINT, SIG_IGN);
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_EQ(props->outputTable.begin()->ToString("|", ""), "0|0\n1\n2\n3");  // 3 is the list's own
    EXPECT_EQ(ProcessUtils::RunCliCommand(CommandOf("cmd /c kill -2 $$", log)), 128 + 2);
    std::signal(SIGINT, old);
}

TEST(ProcessApi, LeavesNoZombies) {
    if (kWindows) GTEST_SKIP() << "processes leave none on Windows";
    std::uint32_t id = 0;
    {
        const auto child = ChildProcess::Start(RequestOf(ChildCommand("copy")));
        ASSERT_TRUE(child);
        id = child->Id();
    }
    const auto entry = std::filesystem::path("/proc") / std::to_string(id);
    while (std::filesystem::exists(entry)) {
        auto next = ChildProcess::Start(RequestOf("true"));  // letting one go reaps the others
        ASSERT_TRUE(next);
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
    const std::error_code invalid = std::make_error_code(std::errc::invalid_argument);
    const std::pair<std::error_code, std::string> cases[] = {
        {std::make_error_code(std::errc::resource_unavailable_try_again), "no thread resources available"},
        {invalid, "system error: " + invalid.message()}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.second);
        RecordingLogger log;
        const auto props = CommandOf("x", log);
        const auto refuse = [&c](const auto&) -> std::thread { throw std::system_error(c.first); };
        EXPECT_EQ(RunCommand(props, refuse), -3);
        EXPECT_THAT(log.Lines(), ElementsAre("Cannot run command 'x' because " + c.second));
        EXPECT_EQ(props->abortEvent, nullptr);
        EXPECT_EQ(props->resultCode, -4);
    }
}

TEST(CommandOutput, LinesLoseTheirEndsOnly) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {"a\r\nb", {"4|a|0", "4|b|1"}},
        {"\n\nx", {"4||0", "4||1", "4|x|2"}},
        {"a\v\f\r\r\n \tb ", {"4|a\v|0", "4| \tb |1"}},
        {std::string("a\0b\nc", 5), {std::string("4|a\0b|0", 7), "4|c|1"}}};
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        DataTable table;
        AddOutputRows(text, 4, true, table);
        std::vector<std::string> lines;
        for (const VariantList& row : table) lines.push_back(row.ToString("|", nullptr));
        EXPECT_EQ(lines, expected);
    }
}

}  // namespace

}  // namespace quillon::test
