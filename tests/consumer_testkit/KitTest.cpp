#include <quillon/ComScope.h>
#include <quillon/ProcessUtils.h>
#include <quillon/SqlApplicationDataStore.h>
#include <quillon/WmiConnector.h>
#include <quillon/testkit/Matchers.h>
#include <quillon/testkit/ScriptedCommands.h>
#include <quillon/testkit/TestHost.h>
#include <quillon/testkit/WmiRepository.h>

using namespace quillon;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(TestKit, WmiAnswersThenFailsThenHangs) {
    const testkit::TestHost host;
    testkit::WmiRepository wmi;
    wmi.AddClass("ROOT\\CIMV2", "Win32_QuickFixEngineering",
                 {{"HotFixID", testkit::CimType::String, true}, {"InstalledOn"}});
    for (const char* const id : {"KB5031356", "KB5032189"}) {
        wmi.AddInstance("ROOT\\CIMV2", "Win32_QuickFixEngineering",
                        VariantList(Variant("HotFixID", id), Variant("InstalledOn", "1/31/2026")));
    }

    const ComScope com;
    WmiConnector connector;
    connector.SetDeadline(500);
    ASSERT_TRUE(connector.Connect("ROOT\\CIMV2"));
    const std::string query = "SELECT HotFixID FROM Win32_QuickFixEngineering";
    DataTable table;
    EXPECT_TRUE(connector.ExecuteQuery(query, &table));
    EXPECT_THAT(table, testkit::Rows(ElementsAre(testkit::Cell("HotFixID", "KB5031356"),
                                                 testkit::Cell("HotFixID", "KB5032189"))));

    wmi.FailNext(testkit::WmiCall::Next, 0x80070005);
    EXPECT_FALSE(connector.ExecuteQuery(query, &table));
    EXPECT_EQ(connector.LastWmiErrorCode(), static_cast<std::int32_t>(0x80070005));

    wmi.HangAfter(1);
    EXPECT_FALSE(connector.ExecuteQuery(query, &table));
    EXPECT_EQ(connector.LastWmiErrorCode(), static_cast<std::int32_t>(0x800705B4));
    wmi.LetGo();
    EXPECT_TRUE(connector.ExecuteQuery(query, &table));
}

TEST(TestKit, CommandsAreScripted) {
    testkit::TestHost host;
    testkit::ScriptedCommands commands;
    commands.Set("ipconfig /all", {"Windows IP Configuration\r\n\r\nHost Name : lab-7\r\n", 0});
    commands.Set("backup", {"begun", 0, std::chrono::milliseconds(0), true});

    const auto listing = std::make_shared<ProcessUtils::CmdProperties>();
    listing->command = "ipconfig /all";
    listing->captureOutput = listing->outputAsLines = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(listing), 0);
    EXPECT_THAT(listing->outputTable,
                testkit::Rows(ElementsAre(testkit::Cell("Output", "Windows IP Configuration"),
                                          testkit::Cell("Output", ""),
                                          testkit::Cell("Output", "Host Name : lab-7"))));

    const auto endless = std::make_shared<ProcessUtils::CmdProperties>();
    endless->command = "backup";
    endless->captureOutput = endless->killOnTimeout = true;
    endless->timeoutSecs = 1;
    EXPECT_EQ(ProcessUtils::RunCliCommand(endless), ProcessUtils::kKilled);
    EXPECT_TRUE(endless->timedOut && endless->killed);
    EXPECT_THAT(endless->outputTable, testkit::Rows(ElementsAre(testkit::Cell("Output", "begun"))));
    EXPECT_THAT(commands.Commands(), ElementsAre("ipconfig /all", "backup"));
}

TEST(TestKit, StoresKeepTables) {
    const testkit::TestHost host;
    {
        SqlApplicationDataStore store("Inventory");
        bool existed = false;
        store.EnsureTableExists("Seen", {{"Name", IApplicationDataStore::Text}}, {"Name"}, existed);
        DataTable row(VariantList(Variant("Name", "disk")));
        EXPECT_TRUE(store.AddToTable("Seen", row));
    }
    SqlApplicationDataStore again("Inventory");
    DataTable found;
    EXPECT_TRUE(again.ExecuteQuery("SELECT Name FROM " + again.QuoteTableName("Seen"), found));
    EXPECT_THAT(found, testkit::Rows(ElementsAre(testkit::Cell("Name", "disk"))));
    EXPECT_THAT(host.log.Lines(ICLogger::Level::Error), IsEmpty());
}
