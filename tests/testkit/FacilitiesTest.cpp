#include <gmock/gmock.h>

#include <stdexcept>

#include "quillon/AuditHolder.h"
#include "quillon/ComScope.h"
#include "quillon/EventLogProxy.h"
#include "quillon/EventLogReader.h"
#include "quillon/StringUtils.h"
#include "quillon/WmiConnector.h"
#include "quillon/testkit/AuditPolicy.h"
#include "quillon/testkit/EventLog.h"
#include "quillon/testkit/Matchers.h"
#include "quillon/testkit/Registry.h"
#include "quillon/testkit/WmiRepository.h"
#include "support/RecordingLogger.h"

// The kit's facilities, as those who use the library's exported classes meet them, on both systems.

namespace quillon::testkit {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kNamespace = "ROOT\\Lab";

class WmiKit : public testing::Test {
protected:
    WmiKit() {
        wmi.AddClass(kNamespace, "Item",
                     {{"Name", CimType::String, true},
                      {"On", CimType::Boolean},
                      {"Small", CimType::Uint8},
                      {"Number", CimType::Uint32},
                      {"Large", CimType::Uint64},
                      {"Ratio", CimType::Real64},
                      {"Since", CimType::DateTime}},
                     {{"Double",
                       {{"Count", CimType::Uint32}},
                       {{"Twice", CimType::Uint32}},
                       [this](const std::string& path, const VariantList& in, VariantList& out) {
                           calledOn = path;
                           out.Add("Twice", 2 * in.Get("Count").GetLongLongValue());
                           return 0U;
                       }}});
        EXPECT_TRUE(connector.Connect(kNamespace));
    }

    bool Query(const std::string& wql) { return connector.ExecuteQuery(wql, &table); }
    static std::uint32_t Unsigned(std::int32_t code) { return static_cast<std::uint32_t>(code); }

    RecordingLogger log;
    WmiRepository wmi;
    const ComScope com;
    WmiConnector connector;
    DataTable table;
    std::string calledOn;
};

}  // namespace

TEST_F(WmiKit, ValuesKeepTheirTypes) {
    const TimePoint start{};
    wmi.AddInstance("root/lab", "item",
                    VariantList(Variant("name", "a"), Variant("on", true), Variant("small", 255),
                                Variant("number", 2147483647LL), Variant("large", "7"), Variant("ratio", 0.5),
                                Variant("since", start)));
    wmi.AddInstance(kNamespace, "Item", VariantList(Variant("Name", "b")));
    ASSERT_TRUE(Query("SELECT * FROM Item"));
    EXPECT_THAT(table, Rows(ElementsAre(AllOf(Cell("Name", "a"), Cell("On", true), Cell("Small", 255),
                                              Cell("Number", 2147483647LL), Cell("Large", 7LL),
                                              Cell("Ratio", 0.5), Cell("Since", "1970-01-01T00:00:00.000Z")),
                                        AllOf(Cell("Name", "b"), NullCell("Number"), NullCell("Since")))));
    for (const VariantList& wrong :
         {VariantList(Variant("Small", 256)), VariantList(Variant("Number", "many")),
          VariantList(Variant("Colour", "red"))}) {
        EXPECT_THROW(wmi.AddInstance(kNamespace, "Item", wrong), std::invalid_argument);
    }
    EXPECT_THROW(wmi.AddInstance(kNamespace, "Thing", VariantList()), std::invalid_argument);
}

/// The texts are those that the library makes of an array of the system's.
TEST_F(WmiKit, ArraysAreGivenInLines) {
    const auto array = [](const char* name, CimType type) { return WmiProperty{name, type, false, true}; };
    wmi.AddClass(kNamespace, "Lists",
                 {{"Name", CimType::String, true},
                  array("Texts", CimType::String),
                  array("Numbers", CimType::Uint16),
                  array("Large", CimType::Uint64),
                  array("Dates", CimType::DateTime)});
    wmi.AddInstance(kNamespace, "Lists",
                    VariantList(Variant("Name", "a"), Variant("Texts", "one\ntwo"),
                                Variant("Numbers", "7\n65535"), Variant("Large", "9223372036854775807\n8"),
                                Variant("Dates", "20260131183000.000000+000")));
    wmi.AddInstance(kNamespace, "Lists", VariantList(Variant("Name", "b"), Variant("Texts", "")));
    ASSERT_TRUE(Query("SELECT * FROM Lists"));
    EXPECT_THAT(table, Rows(ElementsAre(AllOf(Cell("Texts", "one, two"), Cell("Numbers", "7, 65535"),
                                              Cell("Large", "9223372036854775807, 8"),
                                              Cell("Dates", "2026-01-31T18:30:00.000Z")),
                                        AllOf(Cell("Texts", ""), NullCell("Numbers")))));
    EXPECT_THROW(wmi.AddInstance(kNamespace, "Lists", VariantList(Variant("Numbers", "7\nmany"))),
                 std::invalid_argument);
}

TEST_F(WmiKit, AMethodTakesArraysInLines) {
    struct Case {
        CimType type;
        const char *given, *got;  // null: nothing
    };
    const Case cases[] = {
        {CimType::String, "a, b\n\nc", "a, b\n\nc"},
        {CimType::String, "", ""},
        {CimType::Boolean, "true\nFALSE", "true\nfalse"},
        {CimType::Uint8, "1\n256", nullptr},
        {CimType::Uint32, "1\n4294967295", "1\n4294967295"},
        {CimType::Uint64, "18446744073709551615", "18446744073709551615"},
        {CimType::Uint64, "-1", nullptr},
        {CimType::Real64, "-1.25\n2", "-1.25\n2"},
        {CimType::DateTime, "20260131183000.000000+000", "20260131183000.000000+000"},
        {CimType::DateTime, "yesterday", nullptr},
    };
    for (const bool isTold : {true, false}) {
        connector.SetUpdatePolicy(isTold ? WmiConnector::UpdatePolicy::NullsAndArrays
                                         : WmiConnector::UpdatePolicy::Scalars);
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(c.given) + (isTold ? " as an array" : " as a text"));
            Variant got;
            const auto body = [&got](const std::string&, const VariantList& in, VariantList&) {
                if (in.Size() != 0) got = in.Get(0);
                return 0U;
            };
            wmi.AddClass(kNamespace, "Lists", {{"Name", CimType::String, true}},
                         {{"Take", {{"Values", c.type, false, true}}, {}, body, true}});
            MethodParameters parameters;
            parameters.scalars.Add("values", c.given);
            log.Forget();
            ASSERT_TRUE(connector.ExecuteStaticMethod(L"Lists", L"Take", parameters, &table));
            const bool isTaken = isTold && c.got != nullptr;
            EXPECT_EQ(got, isTaken ? Variant("Values", c.got) : Variant());
            EXPECT_EQ(log.Lines(ICLogger::Level::Warn).size(), isTaken ? 0U : 1U);
        }
    }
}

/// A broken provider does so; nothing may be used that is not there.
TEST_F(WmiKit, ASuccessThatGivesNothingIsAFailure) {
    constexpr std::uint32_t kSucceeded = 0, kFailed = 0x80041001;
    const std::function<bool()> operations[] = {
        [this] { return connector.Connect(kNamespace); },
        [this] { return Query("SELECT * FROM Item"); },
        [this] { return connector.ExecuteStaticMethod(L"Item", L"Double", {}, &table); },
    };
    const std::pair<WmiCall, std::size_t> calls[] = {{WmiCall::CreateLocator, 0},
                                                     {WmiCall::ConnectServer, 0},
                                                     {WmiCall::ExecQuery, 1},
                                                     {WmiCall::ReadObject, 2}};
    for (const auto& [call, operation] : calls) {
        SCOPED_TRACE(static_cast<int>(call));
        ASSERT_TRUE(connector.Connect(kNamespace));
        wmi.FailNext(call, kSucceeded);
        EXPECT_FALSE(operations[operation]());
        EXPECT_EQ(Unsigned(connector.LastWmiErrorCode()), kFailed);
    }
    wmi.AddInstance(kNamespace, "Item", VariantList(Variant("Name", "a")));
    wmi.FailNext(WmiCall::Next, kSucceeded);
    EXPECT_TRUE(Query("SELECT * FROM Item"));
}

TEST_F(WmiKit, MethodsAndUpdatesReachTheObjects) {
    wmi.AddInstance(kNamespace, "Item", VariantList(Variant("Name", "a")));
    MethodParameters parameters;
    parameters.scalars.Add("Count", "21");
    ASSERT_TRUE(connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Double", false, parameters, &table));
    EXPECT_THAT(table, Rows(ElementsAre(AllOf(Cell("Twice", 42LL), Cell("ReturnValue", 0LL)))));
    EXPECT_THAT(calledOn, HasSubstr("Item.Name=\"a\""));

    const DataTable updates(VariantList(Variant("Number", 5)));
    DataTable stored;
    ASSERT_TRUE(connector.ExecuteUpdateAll(L"SELECT * FROM Item", &updates, &stored));
    ASSERT_TRUE(Query("SELECT Number FROM Item"));
    EXPECT_THAT(table, Rows(ElementsAre(Cell("Number", 5LL))));
}

/// Fails, is late, and hangs, where it is told; afterwards nobody holds anything.
TEST_F(WmiKit, FailsIsLateAndHangs) {
    wmi.AddInstance(kNamespace, "Item", VariantList(Variant("Name", "a")));
    wmi.FailNext(WmiCall::ExecQuery, 0x80070005, 1);
    EXPECT_TRUE(Query("SELECT Name FROM Item"));
    EXPECT_FALSE(Query("SELECT Name FROM Item"));
    EXPECT_EQ(Unsigned(connector.LastWmiErrorCode()), 0x80070005U);
    EXPECT_THAT(StringUtils::WideStringToNarrow(connector.LastWmiError()), HasSubstr("Access"));

    connector.SetDeadline(100);
    wmi.Delay(WmiCall::Next, std::chrono::milliseconds(400));
    EXPECT_FALSE(Query("SELECT Name FROM Item"));
    EXPECT_EQ(Unsigned(connector.LastWmiErrorCode()), 0x800705B4U);
    wmi.Delay(WmiCall::Next, std::chrono::milliseconds(0));

    for (const WmiCall call : {WmiCall::ExecQuery, WmiCall::Next}) {
        wmi.Hang(call);
        EXPECT_FALSE(Query("SELECT Name FROM Item"));
        EXPECT_EQ(Unsigned(connector.LastWmiErrorCode()), 0x800705B4U);
        wmi.LetGo();
    }
    connector.SetDeadline(0);
    EXPECT_TRUE(Query("SELECT Name FROM Item"));
    EXPECT_EQ(wmi.CountCalls(WmiCall::ConnectServer), 1U);
    EXPECT_GT(wmi.CountLiveObjects(), 0);
}

TEST(WmiKitEnd, TheSystemIsBackAfterwards) {
    const RecordingLogger log;
    const ComScope com;
    WmiConnector before, during, after;
    {
        WmiRepository wmi;
        wmi.AddClass(kNamespace, "Item", {{"Name", CimType::String, true}});
        EXPECT_TRUE(before.Connect(kNamespace));
        WmiConnector none;
        EXPECT_FALSE(none.Connect("ROOT\\Elsewhere"));
    }
    EXPECT_FALSE(after.Connect(kNamespace));
    DataTable table;
    EXPECT_TRUE(before.ExecuteQuery(std::string("SELECT * FROM Item"), &table)) << "a connection outlives it";
    const WmiRepository second;
    EXPECT_FALSE(during.Connect(kNamespace)) << "another repository begins empty";
}

TEST(RegistryKit, HoldsNumbersAndTexts) {
    Registry registry;
    registry.SetNumber("SOFTWARE\\Example", "Port", 0x80000001);
    registry.SetText("software\\example", "Owner", "lab");
    const RegKey key = registry.Open("SOFTWARE\\EXAMPLE");
    ASSERT_NE(key.handle, nullptr);
    EXPECT_EQ(registry.Open("SOFTWARE\\Other").handle, nullptr);
    unsigned long port = 0;
    std::string owner;
    EXPECT_TRUE(RegistryUtils::ReadWindowsRegistryValue(key, "port", port));
    EXPECT_TRUE(RegistryUtils::ReadWindowsRegistryValue(key, "Owner", owner));
    EXPECT_EQ(port, 0x80000001);
    EXPECT_EQ(owner, "lab");
    registry.FailNext(5);
    EXPECT_FALSE(RegistryUtils::ReadWindowsRegistryValue(key, "Port", port));
    EXPECT_TRUE(RegistryUtils::ReadWindowsRegistryValue(key, "Port", port));
    registry.RemoveValue("SOFTWARE\\Example", "Port");
    EXPECT_FALSE(RegistryUtils::ReadWindowsRegistryValue(key, "Port", port));
}

TEST(EventLogKit, IsReadFromAndSubscribedTo) {
    const RecordingLogger log;
    {
        EventLog events;
        ASSERT_TRUE(EventLogProxy::IsAvailable());
        events.AddChannel("Lab");
        events.AddChannel("Quiet", false);
        EXPECT_EQ(events.Write("Lab", {"Disk", 7, 2, "The device has a bad block."}), 1U);
        EXPECT_EQ(events.Write("Lab", {"Disk", 8}), 2U);
        EXPECT_EQ(events.Write("Quiet", {"Disk", 9}), 0U);

        std::vector<std::string> seen;
        const auto note = [&seen](const LogEvent& event) {
            seen.push_back(event.provider + ' ' + std::to_string(event.eventId));
            return true;
        };
        EXPECT_EQ(EventLogReader::Query("Lab", "*[System[(EventID=7)]]", note).errorCode, 0U);
        EXPECT_THAT(seen, ElementsAre("Disk 7"));
        events.FailNext("EvtQuery", 5);
        EXPECT_EQ(EventLogReader::Query("Lab", "*", note).errorCode, 5U);
        EXPECT_TRUE(EventLogProxy::EnableChannelIfRequired(L"Quiet"));
        EXPECT_TRUE(events.IsEnabled("Quiet"));
        EventLogProxy::DisableChannelIfRequired(L"Quiet");
        EXPECT_FALSE(events.IsEnabled("Quiet"));
        EXPECT_EQ(events.CountHandles(), 0U);

        const AuditPolicy policy;  // replaces functions as well
        EXPECT_TRUE(EventLogProxy::IsAvailable());
        EXPECT_EQ(EventLogReader::Query("Lab", "*", note).errorCode, 0U);
    }
    EXPECT_FALSE(EventLogProxy::IsAvailable()) << "until somebody initialises it";
}

TEST(AuditPolicyKit, IsSwitchedOnAgainAfterARefresh) {
    const RecordingLogger log;
    AuditPolicy policy;
    const UniqueIdentifier subcategory = UniqueIdentifier::Generate();
    {
        const AuditHolder holder(subcategory);
        EXPECT_TRUE(holder);
        policy.AwaitQuiet();
        EXPECT_TRUE(policy.IsAudited(subcategory));
        policy.Set(subcategory, true, false);
        policy.AwaitQuiet();
        EXPECT_TRUE(policy.IsAudited(subcategory));
    }
    EXPECT_FALSE(policy.IsAudited(subcategory));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error), testing::IsEmpty());
    policy.FailNext("AuditSetSystemPolicy", 5);
    EXPECT_FALSE(AuditHolder(subcategory));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error), ElementsAre(HasSubstr("(5/0X5) Access")));
    policy.AwaitQuiet();
    EXPECT_EQ(policy.CountLeftOver(), 0U);
}

}  // namespace quillon::testkit
