#include "quillon/WmiConnector.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>
#include <thread>

#include "quillon/ComScope.h"
#include "quillon/ProcessUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

// Against the system's own WMI, and what answers in its place outside Windows.

namespace quillon::test {

namespace {

using testing::StartsWith;

class SystemWmiTest : public testing::Test {
protected:
    SystemWmiTest() { EXPECT_TRUE(connector.Connect("ROOT\\CIMV2")); }

    bool Query(const std::string& wql) { return connector.ExecuteQuery(wql, &table); }

    /// Looks again while the two differ: the number of a process that has ended may be given to another one
    /// between them.
    bool IsListedOrHasEnded(long long id);

    const ComScope com;
    RecordingLogger log;
    WmiConnector connector;
    DataTable table;
};

std::set<long long> ProcessIds() {
    std::vector<unsigned long> ids;
    ProcessUtils::EnumerateProcessIds(ids);
    return {ids.begin(), ids.end()};
}

std::string CommandLineOf(long long id) {
    std::string text;
    ProcessUtils::GetCommandLineForProcess(static_cast<unsigned long>(id), text);
    return text;
}

/// A process that has ended and waits for its parent is still counted, but is none of WMI's.
bool HasEnded(long long id) { return !ProcessIds().contains(id) || CommandLineOf(id).empty(); }

bool SystemWmiTest::IsListedOrHasEnded(long long id) {
    constexpr int kMostLooks = 20;
    for (int look = 0; look < kMostLooks; ++look) {
        if (!Query("SELECT Name FROM Win32_Process WHERE ProcessId = " + std::to_string(id))) return false;
        if (table.GetNumberOfRows() == 1 || HasEnded(id)) return true;
    }
    return false;
}

/// Connects without COM and with it, and uses that connection, with and without a deadline.
const ChildMode withoutCom("wmi-without-com", [](const std::vector<std::string>&) {
    WmiConnector connector(nullptr);
    const auto use = [&connector] {
        const bool isConnected = connector.Connect("ROOT\\CIMV2");
        return isConnected && connector.ExecuteQuery("SELECT Version FROM Win32_OperatingSystem", nullptr);
    };
    const auto show = [&connector](bool works) {
        std::printf(works ? "yes " : "%08x ", static_cast<unsigned int>(connector.LastWmiErrorCode()));
    };
    show(use());
    const ComScope com;
    show(use());
    connector.SetDeadline(60'000);
    show(use());
    if (kWindows) return 0;  // there a thread without COM is in the apartment of the others
    connector.SetDeadline(0);
    std::thread([&] { show(connector.ExecuteQuery("SELECT * FROM Win32_BIOS", nullptr)); }).join();
    return 0;
});

}  // namespace

TEST(SystemWmi, InsistsOnComOnTheCallersThread) {
    EXPECT_EQ(RunChild("wmi-without-com").out, kWindows ? "800401f0 yes yes " : "800401f0 yes yes 800401f0 ");
}

TEST_F(SystemWmiTest, TellsOfTheSystemAndItsDisks) {
    ASSERT_TRUE(Query("SELECT Version, LastBootUpTime FROM Win32_OperatingSystem"));
    ASSERT_EQ(table.GetNumberOfRows(), 1U);
    EXPECT_THAT(table.begin()->Get("LastBootUpTime").GetStringValue(),
                testing::MatchesRegex("20..-..-..T..:..:..\\.....*"));
    EXPECT_NE(WmiConnector::GetStringFromWmi("Win32_OperatingSystem", "Version", L"root\\cimv2"), "");
    ASSERT_TRUE(Query("SELECT DeviceID, DriveType, Size FROM Win32_LogicalDisk WHERE DeviceID = 'C:'"));
    ASSERT_EQ(table.GetNumberOfRows(), 1U);
    EXPECT_GT(table.begin()->Get("Size").GetLongLongValue(), 0);
}

/// Other processes begin and end meanwhile, so each that differs is looked at again by itself.
TEST_F(SystemWmiTest, ListsTheProcessesThatThereAre) {
    const std::set<long long> before = ProcessIds();
    ASSERT_TRUE(Query("SELECT ProcessId FROM Win32_Process"));
    std::set<long long> listed;
    for (const VariantList& row : table) listed.insert(row.Get(0).GetLongLongValue());
    const auto isLiving = [](long long id) { return !CommandLineOf(id).empty(); };
    EXPECT_GE(2 * std::ssize(listed), std::count_if(before.begin(), before.end(), isLiving));
    std::set<long long> either = before;
    either.insert(listed.begin(), listed.end());
    for (const long long id : either) {
        const bool isInBoth = before.contains(id) && listed.contains(id);
        EXPECT_TRUE(isInBoth || IsListedOrHasEnded(id)) << id;
    }
}

TEST_F(SystemWmiTest, CallsAMethodOfAProcess) {
    EXPECT_TRUE(
        connector.ExecuteInstanceMethod(L"SELECT * FROM Win32_Process", L"GetOwner", false, {}, &table));
    ASSERT_EQ(table.GetNumberOfRows(), 1U);
    EXPECT_NE(table.begin()->Get("User").GetStringValue(), "");
    EXPECT_EQ(table.begin()->Get("ReturnValue"), Variant("ReturnValue", 0));
    EXPECT_THAT(table.begin()->Get("ObjectPath").GetStringValue(),
                testing::HasSubstr("Win32_Process.Handle="));
}

TEST_F(SystemWmiTest, CallsAMethodOfAClass) {
    const TempDir dir;
    const auto started = dir.Native("started"), go = dir.Native("go");
    MethodParameters parameters;
    parameters.scalars.Add("commandline", ChildCommand("await", {started.string(), go.string()}));
    ASSERT_TRUE(connector.ExecuteStaticMethod(L"Win32_Process", L"Create", parameters, &table));
    ASSERT_EQ(table.GetNumberOfRows(), 1U);
    EXPECT_EQ(table.begin()->Get("ReturnValue"), Variant("ReturnValue", 0));
    EXPECT_TRUE(AwaitFile(started));
    const std::string id = std::to_string(table.begin()->Get("ProcessId").GetLongLongValue());
    EXPECT_TRUE(Query("SELECT Name FROM Win32_Process WHERE ProcessId = " + id));
    EXPECT_EQ(table.GetNumberOfRows(), 1U);
    dir.Write("go", "");
}

TEST_F(SystemWmiTest, RefusesWhatItDoesNotKnow) {
    EXPECT_FALSE(Query("SELECT Name Win32_Process"));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                testing::ElementsAre(StartsWith("WMI error 0x80041017 - ")));
    EXPECT_FALSE(connector.TryConnect("ROOT\\NoSuchNamespace"));
    EXPECT_FALSE(connector.Connect("ROOT\\NoSuchNamespace"));
    EXPECT_THAT(log.Lines().back(), StartsWith("WMI error 0x8004100e - "));
}

}  // namespace quillon::test
