#include "quillon/testkit/TestHost.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "quillon/IAgentConfiguration.h"
#include "quillon/ParameterBinder.h"
#include "quillon/SqlApplicationDataStore.h"
#include "quillon/testkit/InvokeMethod.h"
#include "quillon/testkit/Matchers.h"
#include "quillon/testkit/SqlEngine.h"
#include "support/TempDir.h"

namespace quillon::testkit {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

void Run(const MethodParameters& parameters, InvocationResult& result) {
    long long number = 0;
    bool throws = false;
    ParameterBinder binder(parameters, false, false);
    binder.AddMandatoryBinding("number", number);
    binder.AddOptionalBinding("throws", throws);
    if (!binder.Bind(result)) return;
    if (throws) throw std::runtime_error("no more");
    result.resultTable.AddRow(VariantList(Variant("Twice", 2 * number)));
}

std::unique_ptr<IModule> MakeSample() {
    const auto describe = [](IMethodMetadataBuilder& builder) {
        builder.Description("Doubles.")
            .CreateParameter("number", typeid(long long))
            .Description("Any.")
            .BindParameter()
            .CreateParameter("throws", typeid(bool))
            .Description("Whether it fails.")
            .OptionalValue(false)
            .BindParameter()
            .CreateColumn("Twice", typeid(long long), false)
            .Description("Doubled.")
            .BindColumn();
    };
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Sample.Double", IMethodMetadata::V5_0, describe, &Run));
    return MakeModule(std::move(methods));
}

ModuleEntry SampleEntry(std::uint32_t version = kModuleInterfaceVersion) {
    return {version, "Sample", "1.0", []() -> IModule* { return MakeSample().release(); },
            [](IModule* module) { delete module; }};
}

bool Keep(SqlApplicationDataStore& store, const std::string& name) {
    bool existed = false;
    store.EnsureTableExists("Seen", {{"Name", IApplicationDataStore::Text}}, {"Name"}, existed);
    DataTable row(VariantList(Variant("Name", name)));
    return store.AddToTable("Seen", row);
}

DataTable ReadSeen(const std::string& database) {
    SqlApplicationDataStore store(database);
    DataTable found;
    store.ExecuteQuery("SELECT Name FROM Seen ORDER BY Name", found);
    return found;
}

}  // namespace

TEST(InvokeMethod, ReadsTextsAndReportsAsTheAgentDoes) {
    const TestHost host;
    const auto module = CreateModule(SampleEntry());
    const InvocationResult result = InvokeMethod(*module, "Sample.Double", {{"number", "21"}});
    EXPECT_THAT(result, Succeeds());
    EXPECT_THAT(result.resultTable, Rows(ElementsAre(Cell("Twice", 42LL))));
    EXPECT_THAT(InvokeMethod(*module, "Sample.Double"), FailsWith(2, HasSubstr("number")));
    EXPECT_THAT(InvokeMethod(*module, "Sample.Double", {{"number", "1"}, {"colour", "red"}}),
                FailsWith(2, HasSubstr("colour")));
    EXPECT_THAT(InvokeMethod(*module, "Sample.Double", {{"number", "1.5"}}),
                FailsWith(2, "Parameter 'number' must be an integer, not '1.5'"));
    EXPECT_THAT(InvokeMethod(*module, "Sample.Triple"), FailsWith(2, "Unknown method 'Sample.Triple'"));
    EXPECT_THAT(InvokeMethod(*module, "Sample.Double", {{"number", "1"}, {"throws", "true"}}),
                FailsWith(1, "Method 'Sample.Double' threw: no more"));
    MethodParameters parameters;
    parameters.scalars.Add("number", 4);
    EXPECT_THAT(InvokeWithParameters(*module, "Sample.Double", parameters).resultTable,
                Rows(ElementsAre(Cell("Twice", 8LL))));
    EXPECT_THROW(CreateModule(SampleEntry(kModuleInterfaceVersion + 1)), std::invalid_argument);
}

TEST(Matchers, SayWhatWasExpectedAndWhatThereIs) {
    InvocationResult result;
    result.resultCode = 3;
    result.errorMessage = "no disk";
    EXPECT_EQ(testing::PrintToString(result), "code 3, message 'no disk', 0 rows, undefined");
    const testing::Matcher<const VariantList&> cell = Cell("Size", 42LL);
    EXPECT_EQ(testing::DescribeMatcher<const VariantList&>(cell), "has the cell 'Size' long long '42'");
    EXPECT_EQ(testing::DescribeMatcher<const VariantList&>(testing::Not(NullCell("Size"))),
              "does not have the null cell Size");
}

TEST(TestHost, RegistersServicesForItsLife) {
    {
        TestHost host;
        host.SetModuleSettings("Sample", {{"Depth", "3"}});
        std::map<std::string, std::string> settings;
        ServiceLocator::Get<IAgentConfiguration>()->GetModuleSettings("Sample", settings);
        EXPECT_EQ(settings["Depth"], "3");
        EXPECT_FALSE(ServiceLocator::Get<IShutdownMonitor>()->IsShutdownRequested());
        host.shutdown.RequestShutdownAfter(1);
        EXPECT_FALSE(ServiceLocator::Get<IShutdownMonitor>()->IsShutdownRequested());
        bool isTold = false;
        host.shutdown.OnShutdown([&isTold] { isTold = true; });
        EXPECT_TRUE(ServiceLocator::Get<IShutdownMonitor>()->IsShutdownRequested());
        EXPECT_TRUE(isTold);
        EXPECT_THAT(host.log.Lines(ICLogger::Level::Warn), IsEmpty());
    }
    EXPECT_EQ(ServiceLocator::ListCurrent(), "(0) ");
}

TEST(SqlEngine, KeepsDatabasesInMemoryUntilItEnds) {
    const test::TempDir unused;
    for (int round = 0; round < 2; ++round) {
        const TestHost host;
        {
            SqlApplicationDataStore first("Inventory"), second("INVENTORY"), other("Ha/s:h?&");
            EXPECT_TRUE(Keep(first, "disk"));
            EXPECT_TRUE(Keep(second, "fan"));
            EXPECT_TRUE(Keep(other, "other"));
        }
        EXPECT_THAT(ReadSeen("inventory"), Rows(ElementsAre(Cell("Name", "disk"), Cell("Name", "fan"))));
        EXPECT_THAT(ReadSeen("Ha/s:h?&"), Rows(ElementsAre(Cell("Name", "other"))));
        EXPECT_THAT(host.log.Lines(ICLogger::Level::Error), IsEmpty())
            << "nothing is left of the round before";
    }
}

TEST(SqlEngine, KeepsFilesOnDisk) {
    const test::TempDir dir;
    for (const char* const name : {"disk", "fan"}) {
        const TestHost host(dir.Path("stores"));
        SqlApplicationDataStore store("Inventory");
        EXPECT_TRUE(Keep(store, name));
    }
    EXPECT_TRUE(dir.Exists("stores/db-inventory.sqlite"));
    const TestHost host(dir.Path("stores"));
    EXPECT_THAT(ReadSeen("Inventory"), Rows(ElementsAre(Cell("Name", "disk"), Cell("Name", "fan"))));
}

}  // namespace quillon::testkit
