#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "examples/RunAgent.h"
#include "modules/Assignments.h"
#include "quillon/MiscUtils.h"
#include "sql/FileLock.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/TestCertificate.h"

namespace quillon::test {

namespace {

using nlohmann::ordered_json;
using testing::HasSubstr;
using testing::Not;

ordered_json RunForJson(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--format", "json"});
    const AgentRun run = RunAgent(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    return ordered_json::parse(run.output);
}

/// The processes that run this program of the build with that in their command lines: other tests, which may
/// end at any moment, run at the same time.
ordered_json RowsOf(const ordered_json& processes, const std::string& program, const std::string& argument) {
    const auto file = ProgramFolder() / (program + (kWindows ? ".exe" : ""));
    ordered_json found = ordered_json::array();
    for (const ordered_json& row : processes) {
        if (row["Executable"] == file.string() &&
            row["CommandLine"].get<std::string>().find(argument) != std::string::npos)
            found.push_back(row);
    }
    return found;
}

}  // namespace

TEST(AgentArguments, AreReadAsTheTypeThatTheMethodDeclares) {
    const auto rows =
        RunForJson({"run", "System.Echo", "integer=-5", "float=-2.5e1", "boolean=TRUE", "text=5", "other=6",
                    "datetime=1970-01-01T00:00:00Z", "datetime=2026-01-31T18:30:00.250+01:00"});
    std::vector<std::string> read;
    for (const auto& row : rows)
        read.push_back(row["Type"].get<std::string>() + ' ' + row["Value"].get<std::string>());
    EXPECT_THAT(
        read, testing::ElementsAre("integer -5", "float -25", "boolean true", "string 5", "string 6",
                                   "datetime 1970-01-01T00:00:00.000Z", "datetime 2026-01-31T17:30:00.250Z"));
}

TEST(AgentArguments, AreRefusedWhenTheyAreNotOfTheirType) {
    const std::string time = "a date and time such as 2026-01-31T18:30:00Z";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"integer", "abc", "an integer"},
        {"integer", "9223372036854775808", "between -9223372036854775808 and 9223372036854775807"},
        {"float", "1e999", "within the range of a double"},
        {"datetime", "2026-01-31T18:30:00+14:01", time},
        {"float", "1,5", "a number"},
        {"boolean", "maybe", "true, false, 1 or 0"},
        {"datetime", "2026-01-31", time},
        {"datetime", "2026-01-31T18:30:00.5Z", time},
    };
    for (const auto& [name, text, expected] : cases) {
        SCOPED_TRACE(name + '=' + text);
        const AgentRun run = RunAgent({"run", "System.Echo", name + '=' + text});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.output, testing::IsEmpty());
        EXPECT_THAT(run.errors,
                    HasSubstr("Parameter '" + name + "' must be " + expected + ", not '" + text + '\''));
    }
}

TEST(AgentMethods, AreListedForPeople) {
    EXPECT_THAT(
        RunAgent({"methods"}).output,
        testing::AllOf(HasSubstr("Commands.Run\n  Runs a command line and answers with what it wrote.\n"
                                 "  Introduced: 5.0 (Windows, Linux), no (MacOS, SolarisIntel, SolarisSparc, "
                                 "Android)\n  Warning: The command runs with all the rights of the agent.\n"),
                       HasSubstr("  Flags: Executes external process, May modify system state\n"),
                       HasSubstr("    command             string, mandatory         The command line.\n"),
                       HasSubstr("    workingDirectory    string, default \"\"        Folder"),
                       HasSubstr("    LineNumber          integer                   From 0.\n"
                                 "      Note: With lines=true only.\n"),
                       Not(HasSubstr("System.Echo"))));
    EXPECT_THAT(RunAgent({"methods", "--format", "markdown"}).output,
                testing::AllOf(HasSubstr("# Methods of the reference agent\n\n## Audit.Hold\n"),
                               HasSubstr("\n\n## System.Metrics\n"), Not(HasSubstr("System.Echo"))));
}

TEST(AgentCertificates, AreListedAndCheckedAgainstGivenRoots) {
    const TempDir dir;
    const auto check = [](const std::vector<std::string>& parameters) {
        std::vector<std::string> arguments{"run", "Certificates.Check"};
        arguments.insert(arguments.end(), parameters.begin(), parameters.end());
        return arguments;
    };
    const std::string file = "file=" + dir.Write("sent.pem", std::string(kHost) + kIssuer);
    const std::string roots = "roots=" + dir.Write("roots.pem", kRoot);
    const ordered_json good = RunForJson(check({file, roots, "usage=1.3.6.1.5.5.7.3.1"})).at(0);
    EXPECT_EQ(good["Trusted"], true);
    std::string chain = good["Chain"];
    std::erase(chain, '"');  // the emulator quotes some names that the system does not
    EXPECT_EQ(chain, "CN=host, CN=Test Issuer, CN=Test Root");
    const ordered_json bad = RunForJson(check({file, roots, "usage=1.3.6.1.5.5.7.3.2"})).at(0);
    EXPECT_EQ(bad["Trusted"], false);
    EXPECT_EQ(bad["StatusText"], "CERT_TRUST_IS_NOT_VALID_FOR_USAGE");
    EXPECT_EQ(RunAgent(check({"file=" + dir.Path("missing")})).exitCode, 3);
    EXPECT_EQ(RunAgent(check({"file="})).exitCode, 2);
    EXPECT_EQ(RunAgent({"run", "Certificates.List"}).exitCode, 2);
    EXPECT_EQ(RunAgent({"run", "Certificates.List", "folder=" + dir.Path("missing")}).exitCode, 3);
    EXPECT_EQ(RunAgent({"run", "Certificates.List", "store=Root"}).exitCode, kWindows ? 0 : 3);
    const ordered_json listed = RunForJson({"run", "Certificates.List", "folder=" + dir.Path()});
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[1]["NotAfter"], "2126-11-01T21:48:11.000Z");
    EXPECT_TRUE(listed[1]["FriendlyName"].is_null());
    EXPECT_EQ(listed[1]["ExtendedKeyUsage"], "1.3.6.1.5.5.7.3.1, 1.2.3.4");
    EXPECT_EQ(listed[1]["KeyUsage"], "DigitalSignature, KeyEncipherment");
    EXPECT_THAT(listed[1]["AlternativeNames"].get<std::string>(),
                testing::StartsWith("DNS:*.example.org, IP:10.0.0.1"));
}

TEST(AgentProcesses, ListHoldsTheAgentItselfAndCanBeFiltered) {
    const ordered_json all = RunForJson({"run", "Processes.List"});
    const ordered_json agents = RowsOf(all, "quillon-agent", "Processes.List");
    ASSERT_FALSE(agents.empty());
    const ordered_json& agent = agents.back();
    EXPECT_TRUE(kWindows || agent["PrivateWorkingSet"] > 4096);  // the emulator cannot tell

    std::vector<ordered_json> found;  // this process at least
    for (const ordered_json& tests : RowsOf(all, "quillon_agent_tests", "")) {
        found.push_back(RunForJson({"run", "Processes.List", "pid=" + tests["Pid"].dump()}));
        if (!found.back().empty()) {
            EXPECT_EQ(found.back()[0]["Pid"], tests["Pid"]);
        }
    }
    EXPECT_THAT(found, testing::Contains(testing::SizeIs(1)));
    EXPECT_EQ(RunForJson({"run", "Processes.List", "pid=4294967296"}).dump(), "[]");
}

TEST(AgentNetwork, ResolvesAndTestsAddresses) {
    EXPECT_FALSE(RunForJson({"run", "Network.Adapters"}).empty());
    EXPECT_EQ(RunForJson({"run", "Network.Adapters", "name=none"}).dump(), "[]");
    EXPECT_EQ(RunForJson({"run", "Network.Resolve", "host=127.0.0.1"}).dump(),
              R"([{"Address":"127.0.0.1","Family":"IPv4"}])");
    EXPECT_EQ(RunForJson({"run", "Network.InRange", "address=10.0.0.5", "ranges=10.0.0.1-10.0.0.9"}).dump(),
              R"([{"InRange":true}])");
    EXPECT_EQ(RunForJson({"run", "Network.Cidr", "address=10.1.2.3", "mask=255.255.0.0"}).dump(),
              R"([{"Cidr":"10.1.0.0/16"}])");
    EXPECT_EQ(RunAgent({"run", "Network.Cidr", "address=10.1.2.256", "mask=255.255.0.0"}).exitCode, 2);
    EXPECT_EQ(RunAgent({"run", "Network.InRange", "address=10.0.0.5", "ranges=10.0.0.1-10.0.0.300"}).exitCode,
              2);
    EXPECT_EQ(RunAgent({"run", "Network.InRange", "address=10.0.5", "ranges=10.0.0.0/8"}).exitCode, 2);
    EXPECT_EQ(RunAgent({"run", "Network.Resolve", "host=256.1.1.1:"}).exitCode, 3);
}

TEST(AgentEventLog, ReadsAndFollowsTheSimulatedChannel) {
    if (kWindows) GTEST_SKIP() << "the emulator's event log ends the process";
    const ordered_json events = RunForJson({"run", "EventLog.Query", "channel=quillon", "max=1"});
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0]["Channel"], "Quillon");
    EXPECT_EQ(events[0]["RecordId"], 2);
    EXPECT_EQ(RunForJson({"run", "EventLog.Follow", "channel=Quillon", "seconds=0"}).at(0)["EventId"], 3);
    EXPECT_EQ(RunAgent({"run", "EventLog.Query", "channel=none"}).exitCode, 3);
    EXPECT_EQ(RunAgent({"run", "EventLog.Follow", "channel=Quillon", "seconds=86401"}).exitCode, 2);
}

TEST(AgentWmi, ReadsTheValuesToSet) {
    VariantList values;
    InvocationResult result;
    EXPECT_TRUE(agent::ReadAssignments("set", "a=x=1;;2; b :text=;n:integer=-3;f:float=0.5;t:boolean=true",
                                       values, result));
    EXPECT_EQ(values, VariantList(Variant("a", "x=1;2"), Variant(" b ", ""), Variant("n", -3),
                                  Variant("f", 0.5), Variant("t", true)));
    EXPECT_TRUE(agent::ReadAssignments("set", "e:null=", values, result) && values.Get("e").IsNull());
    for (const char* text :
         {"e:null", "e:null=x", "a", "=x", "a:=x", "a:word=x", "a:integer=x", "a=1;", ";a=1"}) {
        EXPECT_FALSE(agent::ReadAssignments("set", text, values, result)) << text;
        EXPECT_THAT(result.errorMessage, HasSubstr("'set' parameter cannot be read at '")) << text;
    }
}

TEST(AgentWmi, QueriesAndSaysWhatCannotBeChanged) {
    const std::string wql = "wql=SELECT * FROM Win32_OperatingSystem";
    const ordered_json rows =
        RunForJson({"run", "Wmi.Query", "wql=SELECT Version FROM Win32_OperatingSystem"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_FALSE(rows[0]["Version"].get<std::string>().empty());

    const AgentRun update = RunAgent({"run", "Wmi.Update", wql, "set=Description=text"});
    EXPECT_EQ(update.exitCode, 3);
    EXPECT_THAT(update.errors, HasSubstr("WMI error 0x"));
    EXPECT_THAT(RunAgent({"run", "Wmi.Update", wql, "set=NoSuch=1", "all=true"}).errors,
                HasSubstr("WMI error 0x80041002"));
    EXPECT_EQ(RunAgent({"run", "Wmi.Update", wql, "set=Description:word=text"}).exitCode, 2);
    EXPECT_EQ(RunAgent({"run", "Wmi.Invoke", wql, "class=Win32_Process", "method=Create"}).exitCode, 2);

    const std::string none = "wql=SELECT Name FROM Win32_Process WHERE ProcessId = 4294967295";
    EXPECT_EQ(RunForJson({"run", "Wmi.Query", none}), ordered_json::array());
    EXPECT_THAT(RunAgent({"run", "Wmi.Query", none}).output, testing::StartsWith("Name"));
    const AgentRun call = RunAgent(
        {"run", "Wmi.Invoke", "wql=SELECT * FROM Win32_Process", "method=GetOwner", "arguments=Misspelt=1"});
    EXPECT_EQ(call.exitCode, 3);
    EXPECT_THAT(call.errors, HasSubstr("has no parameter Misspelt"));
}

/// The record of another agent that runs is not taken for one that a killed agent has left.
TEST(AgentAudit, HoldLeavesTheRecordOfARunningAgentAlone) {
    if (kWindows) GTEST_SKIP() << "the emulator has no audit policy";
    const TempDir dir;
    const std::string id = "0cce922b-69ae-11d9-bed3-505054503030", record = "Stores/audit-record";
    dir.Write(record, id + " 0\n");
    const auto hold = [&] {
        return RunAgent({"run", "Audit.Hold", "subcategory=" + id, "seconds=0", "--level", "info", "--data",
                         dir.Native().string()})
            .errors;
    };
    {
        const agent::FileLock running(dir.Path(record));
        EXPECT_THAT(hold(), Not(HasSubstr("Restored")));
        EXPECT_EQ(dir.Read(record), id + " 0\n");
    }
    EXPECT_THAT(hold(), HasSubstr("Restored"));
    EXPECT_FALSE(dir.Exists(record));
}

TEST(AgentAudit, HoldRefusesWhatIsNoSubcategory) {
    EXPECT_THAT(RunAgent({"run", "Audit.Hold", "subcategory=x"}).errors, HasSubstr("must be a GUID"));
}

TEST(AgentSystem, TellsWhereTheAgentRunsAndWhatItCosts) {
    const ordered_json info = RunForJson({"run", "System.Info"}).at(0);
    EXPECT_EQ(info["OsVersion"], MiscUtils::OsVersion().to_string());
    EXPECT_EQ(info["AgentVersion"], "1.0.0.0");
    EXPECT_EQ(info["LibraryVersion"], "1.0.0");
    EXPECT_EQ(info["RuntimeEnvironment"], "AgentEngine");
    EXPECT_EQ(info["WorkingDirectory"], std::filesystem::current_path().string());
    EXPECT_THAT(info["DataFolder"].get<std::string>(), testing::EndsWith("\\Quillon\\Client"));
    EXPECT_THAT(RunAgent({"run", "System.Metrics", "--format", "csv"}).output,
                HasSubstr("Name,Value,Unit\r\n"));
}

}  // namespace quillon::test
