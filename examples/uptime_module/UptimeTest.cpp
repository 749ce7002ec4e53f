#include <quillon/testkit/InvokeMethod.h>
#include <quillon/testkit/Matchers.h>
#include <quillon/testkit/TestHost.h>
#include <quillon/testkit/WmiRepository.h>

using namespace quillon;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

extern "C" const ModuleEntry* QuillonModuleEntry();

class UptimeTest : public testing::Test {
protected:
    UptimeTest() {
        wmi.AddClass(
            "ROOT\\CIMV2", "Win32_OperatingSystem",
            {{"CSName", testkit::CimType::String, true}, {"LastBootUpTime", testkit::CimType::DateTime}});
        wmi.AddInstance(
            "ROOT\\CIMV2", "Win32_OperatingSystem",
            VariantList(Variant("CSName", "lab-7"), Variant("LastBootUpTime", "20260131183000.000000+000")));
    }

    testkit::TestHost host;
    testkit::WmiRepository wmi;
    const std::shared_ptr<IModule> module = testkit::CreateModule(*QuillonModuleEntry());
};

TEST_F(UptimeTest, TellsTheNameAndTheStartOfTheMachine) {
    const InvocationResult result = testkit::InvokeMethod(*module, "Uptime.Read", {{"timeout", "5"}});
    EXPECT_THAT(result, testkit::Succeeds());
    EXPECT_THAT(
        result.resultTable,
        testkit::Rows(ElementsAre(AllOf(testkit::Cell("CSName", "lab-7"),
                                        testkit::Cell("LastBootUpTime", "2026-01-31T18:30:00.000Z")))));
}

TEST_F(UptimeTest, SaysWhatIsWrongWithTheCall) {
    EXPECT_THAT(testkit::InvokeMethod(*module, "Uptime.Read", {{"timeout", "0"}}),
                testkit::FailsWith(2, HasSubstr("timeout")));
    EXPECT_THAT(testkit::InvokeMethod(*module, "Uptime.Read", {{"timeout", "soon"}}),
                testkit::FailsWith(2, "Parameter 'timeout' must be an integer, not 'soon'"));
    EXPECT_EQ(wmi.CountCalls(testkit::WmiCall::ConnectServer), 0U);
}

TEST_F(UptimeTest, PassesOnWhatWmiSays) {
    wmi.FailNext(testkit::WmiCall::ExecQuery, 0x80041003);  // WBEM_E_ACCESS_DENIED
    EXPECT_THAT(testkit::InvokeMethod(*module, "Uptime.Read"),
                testkit::FailsWith(3, HasSubstr("WMI error 0x80041003")));
    EXPECT_THAT(host.log.Lines(ICLogger::Level::Error), ElementsAre(HasSubstr("0x80041003")));
}

TEST_F(UptimeTest, EndsWhenWmiHangs) {
    wmi.Hang(testkit::WmiCall::Next);
    EXPECT_THAT(testkit::InvokeMethod(*module, "Uptime.Read", {{"timeout", "1"}}),
                testkit::FailsWith(3, HasSubstr("0x800705b4")));  // ERROR_TIMEOUT
}
