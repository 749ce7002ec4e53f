#include "simulation/machine/WmiFacts.h"

#include <gmock/gmock.h>
#include <net/if.h>
#include <pwd.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <system_error>
#include <thread>

#include "base/Utf.h"
#include "support/posix/FailingCalls.h"

// Against what the system tells by other ways than those that the classes are read by.

namespace quillon {

namespace {

using namespace simulation;

using testing::ElementsAre;
using Row = std::map<std::string, std::string>;

std::string JoinedText(const _variant_t& array) {
    LONG last = -1;
    EXPECT_EQ(SafeArrayGetUBound(array.parray, 1, &last), S_OK);
    std::string joined;
    for (LONG i = 0; i <= last; ++i) {
        _bstr_t text;
        EXPECT_EQ(SafeArrayGetElement(array.parray, &i, &text.GetBSTR()), S_OK);
        joined += (i == 0 ? "" : " ") + base::ToUtf8({text, text.length()});
    }
    return joined;
}

std::string TextOf(const _variant_t& value) {
    _variant_t text;
    if (value.vt == VT_NULL) return "NULL";
    if (value.vt == (VT_ARRAY | VT_BSTR)) return JoinedText(value);
    EXPECT_EQ(VariantChangeTypeEx(&text, &value, LOCALE_INVARIANT, 0, VT_BSTR), S_OK) << value.vt;
    return base::ToUtf8({text.bstrVal, SysStringLen(text.bstrVal)});
}

Row ToRow(const WmiValues& values) {
    Row row;
    for (const auto& [name, value] : values) row[base::ToUtf8(name)] = TextOf(value);
    return row;
}

std::vector<Row> Query(const WmiClass& wmiClass, const std::vector<std::wstring>& wanted) {
    std::vector<Row> rows;
    for (const WmiValues& values : wmiClass.live(wanted)) rows.push_back(ToRow(values));
    return rows;
}

Row FindProcess(const std::string& id, const std::vector<std::wstring>& wanted = {}) {
    for (const Row& row : Query(ProcessClass(), wanted)) {
        if (row.at("Handle") == id) return row;
    }
    return {};
}

HRESULT Call(const std::wstring& method, const std::string& handle, const WmiValues& in, Row& out) {
    for (const auto& each : ProcessClass().methods) {
        if (each.name != method) continue;
        WmiValues values;
        const HRESULT result = each.body(
            L"\\\\HOST\\ROOT\\CIMV2:Win32_Process.Handle=\"" + base::ToWide(handle) + L"\"", in, values);
        out = ToRow(values);
        return result;
    }
    return E_NOTIMPL;
}

std::string StartOf(const std::string& commandLine, const std::wstring& folder = L"") {
    Row out;
    const WmiValues in = {{L"commandline", base::ToWide(commandLine).c_str()},
                          {L"CurrentDirectory", folder.c_str()}};
    EXPECT_EQ(Call(L"Create", "", in, out), S_OK);
    return out["ReturnValue"] == "0" ? out["ProcessId"] : "failed: " + out["ReturnValue"];
}

}  // namespace

TEST(WmiFacts, EveryClassTellsItsPropertiesAndDistinctKeys) {
    for (const auto make : {OperatingSystemClass, ComputerSystemClass, ProcessClass, LogicalDiskClass,
                            NetworkAdapterClass, NetworkAdapterConfigurationClass, ServiceClass, BiosClass,
                            UserAccountClass, QuickFixEngineeringClass}) {
        const WmiClass made = make();
        SCOPED_TRACE(base::ToUtf8(made.name));
        std::set<std::string> names, keys;
        for (const auto& property : made.properties) names.insert(base::ToUtf8(property.name));
        EXPECT_EQ(names.size(), made.properties.size());
        for (const Row& row : Query(made, {})) {
            for (const auto& [name, value] : row) EXPECT_TRUE(names.contains(name)) << name;
            if (made.keys.empty()) continue;
            std::string all;
            for (const std::wstring& key : made.keys) {
                const std::string& value = row.at(base::ToUtf8(key));
                EXPECT_NE(value, "NULL");
                all += value + '\n';
            }
            EXPECT_TRUE(keys.insert(all).second) << all;
        }
    }
}

TEST(WmiFacts, ThisProcessIsAsItKnowsItself) {
    const Row row = FindProcess(std::to_string(::getpid()));
    std::string executable = std::filesystem::read_symlink("/proc/self/exe").string();
    std::replace(executable.begin(), executable.end(), '/', '\\');
    std::string name;
    std::getline(std::ifstream("/proc/self/comm"), name);
    EXPECT_EQ(row.at("Name"), name);
    EXPECT_EQ(row.at("ExecutablePath"), "C:" + executable);
    EXPECT_EQ(row.at("ParentProcessId"), std::to_string(::getppid()));
    EXPECT_EQ(row.at("SessionId"), std::to_string(::getsid(0)));
    EXPECT_THAT(row.at("CommandLine"), testing::HasSubstr(executable.substr(executable.rfind('\\') + 1)));
    EXPECT_GE(std::stoull(row.at("PeakVirtualSize")), std::stoull(row.at("VirtualSize")) / 2);
    const std::string now = TextOf(WmiFact(CurrentTime()).As(CIM_DATETIME));
    const std::string boot = TextOf(WmiFact(BootTime()).As(CIM_DATETIME));
    EXPECT_LE(row.at("CreationDate"), now);
    EXPECT_GE(row.at("CreationDate"), boot);
    // No more than was asked for.
    EXPECT_THAT(FindProcess(row.at("Handle"), {L"THREADCOUNT"}),
                ElementsAre(testing::Pair("Handle", row.at("Handle")), testing::Key("ThreadCount")));
}

TEST(WmiFacts, MethodsStartTellOfAndEndProcesses) {
    const std::string id = StartOf("sleep 600", L"C:\\");
    EXPECT_EQ(FindProcess(id)["ParentProcessId"], std::to_string(::getpid()));
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + id + "/cwd"), "/");
    Row out;
    EXPECT_EQ(Call(L"GetOwner", id, {}, out), S_OK);
    EXPECT_EQ(out["User"], ::getpwuid(::geteuid())->pw_name);
    EXPECT_EQ(Call(L"Terminate", id, {}, out), S_OK);
    EXPECT_EQ(out["ReturnValue"], "0");
    while (!FindProcess(id).empty()) std::this_thread::yield();
    EXPECT_EQ(Call(L"Terminate", id, {}, out), S_OK);
    EXPECT_EQ(out["ReturnValue"], "2");  // it has ended already

    EXPECT_EQ(StartOf("/no/such/program"), "failed: 9");
    EXPECT_EQ(StartOf("sleep 600", L"C:\\no\\such"), "failed: 9");
    EXPECT_EQ(StartOf(""), "failed: 21");
    for (const char* handle : {"0", "-1", "x", "1x", "99999999999"}) {
        EXPECT_EQ(Call(L"Terminate", handle, {}, out), WBEM_E_NOT_FOUND) << handle;
        EXPECT_EQ(Call(L"GetOwner", handle, {}, out), WBEM_E_NOT_FOUND) << handle;
    }
}

TEST(WmiFacts, TheMachineIsAsTheSystemCallsTell) {
    char host[256] = "";
    struct sysinfo figures {};
    struct statvfs space {};
    ASSERT_TRUE(::gethostname(host, sizeof host) == 0 && ::sysinfo(&figures) == 0 &&
                ::statvfs("/", &space) == 0);
    const Row system = Query(OperatingSystemClass(), {}).at(0);
    EXPECT_EQ(system.at("CSName"), host);
    EXPECT_EQ(system.at("TotalVisibleMemorySize"),
              std::to_string(figures.totalram * figures.mem_unit / 1024));
    EXPECT_EQ(system.at("OSType"), "36");
    const Row computer = Query(ComputerSystemClass(), {}).at(0);
    EXPECT_EQ(computer.at("NumberOfLogicalProcessors"), std::to_string(std::thread::hardware_concurrency()));
    for (const Row& disk : Query(LogicalDiskClass(), {L"Size", L"DriveType"})) {
        SCOPED_TRACE(disk.at("DeviceID"));
        if (disk.at("DeviceID") != "C:") continue;
        EXPECT_EQ(disk.at("Size"), std::to_string(space.f_blocks * space.f_frsize));
    }
    std::map<std::string, std::string> interfaces, found;
    const std::unique_ptr<struct if_nameindex, decltype(&::if_freenameindex)> list(::if_nameindex(),
                                                                                   &::if_freenameindex);
    for (const auto* each = list.get(); each->if_index != 0; ++each) {
        interfaces[each->if_name] = std::to_string(each->if_index);
    }
    for (const Row& adapter : Query(NetworkAdapterClass(), {L"Name"}))
        found[adapter.at("Name")] = adapter.at("DeviceID");
    EXPECT_EQ(found, interfaces);
}

TEST(WmiFacts, TheLoopbackIsConfiguredAndAccountsAreTheSystems) {
    const std::string index = std::to_string(::if_nametoindex("lo"));
    for (const Row& row : Query(NetworkAdapterConfigurationClass(), {})) {
        if (row.at("Index") != index) continue;
        EXPECT_THAT(row.at("IPAddress"), testing::StartsWith("127.0.0.1"));
        EXPECT_THAT(row.at("IPSubnet"), testing::StartsWith("255.0.0.0"));
        EXPECT_EQ(row.at("DefaultIPGateway"), "NULL");
        EXPECT_EQ(row.at("MACAddress"), "NULL");
    }
    std::string user = "none";
    for (const Row& row : Query(UserAccountClass(), {L"Name"})) {
        if (row.at("Name") == ::getpwuid(::geteuid())->pw_name) user = row.at("Name");
    }
    EXPECT_EQ(user, ::getpwuid(::geteuid())->pw_name);
}

TEST(WmiFacts, AListThatTheSystemRefusesIsNotAnEmptyOne) {
    for (const WmiClass& refused : {ServiceClass(), NetworkAdapterClass()}) {
        test::ThisThreadsFileCalls() = {1, EMFILE, 0, false};
        EXPECT_THROW(refused.live({}), std::system_error);
        test::ThisThreadsFileCalls() = {1, EACCES, 0, false};
        EXPECT_NO_THROW(refused.live({L"Name"}));
        test::ThisThreadsFileCalls() = {};
    }
}

TEST(WmiFacts, DatesAreLocalWithTheirOffset) {
    const char* const zone = ::getenv("TZ");
    const std::string before = zone == nullptr ? "" : zone;
    for (const auto& [name, expected] : {std::pair("AAA-5:30", "20010909071640.123456+330"),
                                         std::pair("BBB+3", "20010908224640.123456-180")}) {
        SCOPED_TRACE(name);
        ::setenv("TZ", name, 1);
        EXPECT_EQ(TextOf(WmiFact(1'000'000'000'123'456LL).As(CIM_DATETIME)), expected);
    }
    zone == nullptr ? ::unsetenv("TZ") : ::setenv("TZ", before.c_str(), 1);
}

}  // namespace quillon
