#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

#include "cli/Completion.h"
#include "cli/MethodList.h"
#include "cli/OpenMetrics.h"
#include "cli/TableText.h"
#include "common/ShownText.h"
#include "common/Suggestion.h"
#include "examples/RunAgent.h"
#include "host/Host.h"
#include "modules/Arguments.h"
#include "serve/CallParameters.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const DataTable& Sample() {
    static const DataTable table{
        VariantList(Variant("Pid", 7), Variant("CommandLine", "a|b\n\"c\\"), Variant("Up", true)),
        VariantList(Variant("Pid", 8), Variant("CommandLine", "a|b\n\"c\\"), Variant::NullVariant("Up"))};
    return table;
}

/// What a schema asks of a value: of its words those that this project uses. Returns the first fault.
std::string FaultOf(const json& value, const json& schema, const json& root, const std::string& place) {
    if (schema.contains("$ref"))
        return FaultOf(value, root.at(json::json_pointer(schema["$ref"].get<std::string>().substr(1))), root,
                       place);
    if (schema.contains("enum") &&
        std::find(schema["enum"].begin(), schema["enum"].end(), value) == schema["enum"].end())
        return place + ": not of the enum";
    if (schema.contains("type")) {
        const json types = schema["type"].is_array() ? schema["type"] : json::array({schema["type"]});
        if (std::find(types.begin(), types.end(), value.type_name()) == types.end())
            return place + ": " + value.type_name();
    }
    std::string fault;
    if (value.is_array() && schema.contains("items")) {
        for (std::size_t i = 0; i < value.size() && fault.empty(); ++i)
            fault = FaultOf(value[i], schema["items"], root, place + '/' + std::to_string(i));
    }
    if (!value.is_object()) return fault;
    for (const std::string name : schema.value("required", json::array())) {
        if (!value.contains(name)) return place + ": no " + name;
    }
    for (const auto& [name, member] : value.items()) {
        const json& known =
            schema["properties"].contains(name) ? schema["properties"][name] : schema["additionalProperties"];
        if (known == false) return place + ": unknown " + name;
        if (fault.empty()) fault = FaultOf(member, known, root, place + '/' + name);
    }
    return fault;
}

}  // namespace

TEST(AgentTool, NamesTheWordThatIsWrongAndWhatItResembles) {
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
        {{"rnu"}, "Unknown sub-command 'rnu'; did you mean 'run'?"},
        {{"run", "System.Info", "--fromat=json"}, "Unknown option '--fromat'; did you mean '--format'?"},
        {{"serve", "--zzzzz"}, "Unknown option '--zzzzz'"},
        {{"run", "system.inf"}, "Unknown method 'system.inf'; did you mean 'System.Info'?"},
        {{"run", "Commands.Run", "command=a", "timout=5", "linse=1"},
         "named 'timout'; did you mean 'timeout'?; Undefined parameter named 'linse'; did you mean 'lines'?"},
        {{"run", "Commands.Run", "comand=a"},
         "Missing parameter 'command'; Undefined parameter named 'comand'; "
         "did you mean 'command'?"},
        {{"methods", "Network.Resolv3"},
         "No method begins with 'Network.Resolv3'; did you mean 'Network.Resolve'?"},
        {{"run", "System.Info", "--level", "loud"}, "loud not in {trace,"},
        {{"run", "System.Info", "--log"}, "--log"},
        {{"serve", "--parallel", "many"}, "many"},
        {{"run", "System.Info",
          "a\x01"
          "b"},
         "'a\\x01b' is not of the form name=value"},
        {{"\xC3\xA9\x1B\xC2\x9B"}, "Unknown sub-command '\xC3\xA9\\x1B\\x9B'"},
    };
    for (const auto& [arguments, message] : cases) {
        SCOPED_TRACE(message);
        const AgentRun run = RunAgent(arguments);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.errors, HasSubstr(message));
        EXPECT_EQ(run.output, "");
    }
    const std::string none = "\xEF\xBF\xBD";
    EXPECT_EQ(agent::TerminalText("a\x9B[2J\xE2\x82\xAC\xC3\n"),
              "a" + none + "[2J\xE2\x82\xAC" + none + "\\n");
    EXPECT_EQ(agent::ShownText(std::string(199, 'x') + "\xC3\xA9"), std::string(199, 'x') + "...");
    EXPECT_EQ(agent::Suggestion("abc", {"xyz", "Acb"}), "; did you mean 'Acb'?");
    EXPECT_EQ(agent::Suggestion("", {"a"}) + agent::Suggestion("-x", {"-h"}), "");
}

TEST(AgentTool, TellsItsVersionAndSomeOfItsMethods) {
    EXPECT_EQ(RunAgent({"--version"}).output, "quillon-agent 1.0.0");
    EXPECT_THAT(RunAgent({"methods", "Network."}).output,
                AllOf(HasSubstr("Network.Cidr\n"), Not(HasSubstr("System.Info"))));
    for (const std::size_t width : {40U, 90U, 0U}) {
        std::istringstream list(
            agent::DescribeMethods(agent::Host({}).GetModules(), "Audit", agent::ListFormat::Text, width));
        for (std::string line; std::getline(list, line);) {
            const bool canBreak = line.find("quillon-agent run") == std::string::npos;
            EXPECT_LE(line.size(), canBreak ? std::max<std::size_t>(width == 0 ? 100 : width, 50) : 200)
                << line;
        }
    }
    const AgentRun service = RunAgent({"service", "run"});
    EXPECT_EQ(service.exitCode, 1);
    EXPECT_THAT(service.errors,
                HasSubstr(kWindows ? "Only the service control manager" : "no Windows services"));
}

TEST(AgentTool, KnowsATableByItsDefaultToo) {
    static const DataTable none;
    const agent::Host host({});  // has the builders
    std::vector<Method> methods;
    methods.push_back(MakeMethod(
        "A.B", IMethodMetadata::V5_0,
        [](IMethodMetadataBuilder& builder) {
            builder.CreateParameter("rows", typeid(DataTable)).OptionalValue("rows", &none).BindParameter();
        },
        MethodFunction()));
    MethodParameters parameters;
    InvocationResult result;
    EXPECT_FALSE(agent::ReadParameters({"rows=x"}, *methods[0].metadata, parameters, result));
    EXPECT_THAT(result.errorMessage, HasSubstr("'rows' must be a table, which the command line cannot give"));
    const agent::RequestValue number{.kind = agent::RequestValue::Kind::Integer, .integer = 5};
    EXPECT_FALSE(agent::CallParameters().Read({{"rows", number}}, *methods[0].metadata, result));
    EXPECT_EQ(result.errorMessage, "Parameter 'rows' must be an array of objects");
    agent::ModuleList modules;
    modules.push_back(MakeModule(std::move(methods)));
    EXPECT_THAT(agent::DescribeMethods(modules, "", agent::ListFormat::Text, 0),
                HasSubstr("rows                table, optional"));
}

TEST(AgentTool, MethodsAsJsonFollowTheSchema) {
    const json schema =
        json::parse(std::ifstream(QUILLON_AGENT_SOURCES "/../../docs/agent-methods.schema.json"));
    const json methods = json::parse(RunAgent({"methods", "--format", "json"}).output);
    EXPECT_EQ(FaultOf(methods, schema, schema, ""), "");
    json wrong = methods;
    wrong[0]["parameters"][0]["optional"] = "yes";
    EXPECT_EQ(FaultOf(wrong, schema, schema, ""), "/0/parameters/0/optional: string");
    wrong = methods;
    wrong[1]["extra"] = 1;
    EXPECT_EQ(FaultOf(wrong, schema, schema, ""), "/1: unknown extra");
}

TEST(AgentTool, WritesTablesInFurtherForms) {
    std::ostringstream metrics, lines, named;
    agent::WriteOpenMetrics(metrics, Sample(), "Processes.List");
    EXPECT_EQ(metrics.str(),
              "# TYPE quillon_processes_list_pid gauge\n"
              "quillon_processes_list_pid{command_line=\"a|b\\n\\\"c\\\\\"} 7\n"
              "quillon_processes_list_pid{command_line=\"a|b\\n\\\"c\\\\\",row=\"1\"} 8\n"
              "# TYPE quillon_processes_list_up gauge\n"
              "quillon_processes_list_up{command_line=\"a|b\\n\\\"c\\\\\"} 1\n"
              "# EOF\n");
    agent::WriteOpenMetrics(
        named,
        DataTable(VariantList(Variant("Name", "UserTime"), Variant("Value", 5), Variant("Unit", "ms"))),
        "A.B");
    EXPECT_EQ(named.str(),
              "# TYPE quillon_a_b_user_time gauge\nquillon_a_b_user_time{unit=\"ms\"} 5\n# EOF\n");
    std::ostringstream odd;
    VariantList row(Variant("a b", 123456789.25), Variant("a-b", 2),
                    Variant("a_b", TimePoint(std::chrono::seconds(1'789'000'001))));
    for (const char* label : {"1st", "x-y", "x y", "Row"}) row.Add(label, "t\xFF");
    agent::WriteOpenMetrics(odd, DataTable(row), "A.B");
    const std::string labels = "{_1st=\"t\uFFFD\",x_y=\"t\uFFFD\",x_y_2=\"t\uFFFD\",row_2=\"t\uFFFD\"} ";
    EXPECT_EQ(odd.str(), "# TYPE quillon_a_b_a_b gauge\nquillon_a_b_a_b" + labels +
                             "123456789.25\n# TYPE quillon_a_b_a_b_2 gauge\nquillon_a_b_a_b_2" + labels +
                             "2\n# TYPE quillon_a_b_a_b_3 gauge\nquillon_a_b_a_b_3" + labels +
                             "1789000001\n# EOF\n");
    std::ostringstream alike;
    agent::WriteOpenMetrics(
        alike,
        DataTable(VariantList(Variant("N", 1), Variant("A", "x"), Variant("B", "y")),
                  VariantList(Variant("N", 2), Variant("B", "y"), Variant("A", "x"), Variant("C", "")),
                  VariantList(Variant("N", 3), Variant("Name", "n"), Variant("Value", "text"))),
        "A.B");
    EXPECT_EQ(alike.str(),
              "# TYPE quillon_a_b_n gauge\nquillon_a_b_n{a=\"x\",b=\"y\"} 1\n"
              "quillon_a_b_n{b=\"y\",a=\"x\",row=\"1\"} 2\n"
              "quillon_a_b_n{name=\"n\",value=\"text\"} 3\n# EOF\n");
    agent::WriteLines(lines, DataTable(VariantList(Variant("Steers",
                                                           "\x9B"
                                                           "2J"))));
    EXPECT_EQ(lines.str(), "Steers = \uFFFD2J\n");
    lines.str("");
    agent::WriteLines(lines, Sample());
    EXPECT_THAT(lines.str(),
                AllOf(HasSubstr("        Pid = 7\nCommandLine = a|b\\n\"c\\\n         Up = true\n\n"),
                      HasSubstr("         Up = \n")));
    lines.str("");
    agent::WriteLines(lines, DataTable(VariantList(Variant("\u00E9\n", 1), Variant("abcd", 2))));
    EXPECT_EQ(lines.str(), " \u00E9\\n = 1\nabcd = 2\n");
    lines.str("");
    agent::WriteLines(lines, DataTable(VariantList(Variant(std::string(1000, 'n'), 1), Variant("n", 2))));
    EXPECT_THAT(lines.str(), EndsWith("n = 1\n" + std::string(255, ' ') + "n = 2\n"));
    EXPECT_THAT(RunAgent({"run", "System.Metrics", "--format", "jsonl"}).output, HasSubstr("}\n{\"Name\":"));
    EXPECT_EQ(RunAgent({"run", "Network.Cidr", "--format", "openmetrics"}).output, "# EOF");
}

TEST(AgentTool, CompletesWords) {
    const auto complete = [](const std::vector<std::string>& words) {
        return agent::Complete(words, {});  // methods are looked at with a shell
    };
    EXPECT_THAT(complete({"s"}), ElementsAre("serve", "service"));
    EXPECT_THAT(complete({"--v"}), ElementsAre("--version"));
    EXPECT_THAT(complete({"run", "A.B", "--log-"}), ElementsAre("--log-format", "--log-to"));
    EXPECT_THAT(complete({"run", "--log-to", " "}), ElementsAre("journal", "eventlog"));
    EXPECT_THAT(complete({"service", "--data", "x", "r"}), ElementsAre("remove", "run"));
    EXPECT_THAT(complete({"run", "--log", ""}), IsEmpty());
    EXPECT_THAT(complete({"none", ""}), IsEmpty());
    EXPECT_THAT(complete({"run", "--log-to", "=", "j"}), ElementsAre("journal"));
    EXPECT_THAT(complete({"run", "--log-to", "="}), ElementsAre("journal", "eventlog"));
    EXPECT_THAT(complete({"run", "--log-to=j"}), ElementsAre("--log-to=journal"));
    EXPECT_THAT(complete({"run", "--log=x"}), IsEmpty());
    EXPECT_THAT(RunAgent({"completion", "powershell"}).output,
                HasSubstr("Register-ArgumentCompleter -Native"));
}

TEST(AgentTool, CompletesToAllThatThereIsAndNothingElse) {
    const json methods = json::parse(RunAgent({"methods", "--format", "json"}).output);
    std::map<std::string, std::string> helps;
    for (const std::string& command : agent::Complete({""}, {}))
        helps[command] = RunAgent({command, "--help"}).output;
    const agent::Host host({});
    const auto complete = [&host](const std::vector<std::string>& words) {
        return agent::Complete(words, host.GetModules());
    };
    std::vector<std::string> names;
    for (const json& method : methods) {
        names.push_back(method["name"]);
        std::vector<std::string> parameters;
        for (const json& parameter : method["parameters"])
            parameters.push_back(parameter["name"].get<std::string>() + '=');
        EXPECT_EQ(complete({"run", names.back(), ""}), parameters) << names.back();
        EXPECT_THAT(complete({"run", names.back(), "a", "=", ""}), IsEmpty());
    }
    EXPECT_THAT(complete({"run", ""}), testing::UnorderedElementsAreArray(names));
    EXPECT_THAT(complete({"methods", ""}), testing::UnorderedElementsAreArray(names));
    for (const auto& [command, help] : helps) {
        std::set<std::string> options;
        const std::regex option("--?[a-z][a-z-]*(?=[ ,])");
        std::istringstream lines(help);
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with("  -")) continue;
            const std::string listed = line.substr(0, line.find("  ", 2)) + ' ';
            for (std::sregex_iterator i(listed.begin(), listed.end(), option), end; i != end; ++i)
                options.insert(i->str());
        }
        EXPECT_THAT(complete({command, "-"}), testing::UnorderedElementsAreArray(options)) << help;
    }
}

/// For Linux, which has the shell and the reader of manual pages.
TEST(AgentTool, ItsScriptAndItsPageWorkWithTheSystemsTools) {
    if (kWindows) GTEST_SKIP() << "needs bash and man";
    const TempDir dir;
    dir.Write("try",
              "source <(\"$1\" completion bash); complete -p quillon-agent\n"
              "ask() { COMP_WORDS=(\"$AGENT\" \"$@\"); COMP_CWORD=$#; COMPREPLY=()\n"
              "  _quillon_agent; echo \"${COMPREPLY[*]}\"; }\n"
              "AGENT=$1; ask run Network.R; ask run Network.Resolve ti; ask run --format ''\n");
    const std::string agent = AgentCommand({}).Get();
    EXPECT_THAT(
        RunLine("bash " + dir.Native("try").string() + ' ' + agent).output,
        AllOf(HasSubstr("complete -o default -F _quillon_agent quillon-agent\n"),
              HasSubstr("\nNetwork.Resolve\ntimeout=\ntext json jsonl csv line markdown openmetrics")));
    dir.Write("page", RunAgent({"manual"}).output + '\n');
    const AgentRun page = RunLine("man --warnings -l -P cat " + dir.Native("page").string());
    EXPECT_THAT(page.output, AllOf(HasSubstr("QUILLON-AGENT(1)"), HasSubstr("--format"),
                                   HasSubstr("EXIT STATUS"), Not(HasSubstr("warning"))));
}

}  // namespace quillon::test
