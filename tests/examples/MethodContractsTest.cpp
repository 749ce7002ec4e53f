#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>

#include "host/Host.h"
#include "quillon/MetadataExport.h"
#include "quillon/MethodMetadata.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using nlohmann::json;

constexpr const char* kUnknown = "no such parameter";
constexpr const char* kJudgesNothing = "System.Echo";  // it answers with whatever the host has read

/// A host with every module of the agent and one in a library of its own.
class MethodContracts : public TempDirTest {
protected:
    static agent::AgentConfiguration WithModules(const TempDir& dir) {
        const std::string name = std::string("good") + (kWindows ? ".dll" : ".so");
        std::filesystem::copy_file(std::filesystem::path(QUILLON_TEST_MODULES) / name, dir.Native(name));
        agent::AgentConfiguration configuration;
        configuration.SetModuleDirectory(dir.Native().string());
        return configuration;
    }

    /// Every refused value logs an error.
    static agent::LogSettings SilentLog() {
        agent::LogSettings log;
        log.level = ICLogger::Level::Fatal;
        return log;
    }
    static Variant ValueOf(const std::string& name, const std::string& type) {
        if (type == "integer") return Variant(name, 5);
        if (type == "float") return Variant(name, 5.5);
        if (type == "boolean") return Variant(name, true);
        return Variant(name, "text");
    }
    /// Has every mandatory parameter, and one that no method knows, so that nothing is ever done.
    static MethodParameters Harmless(const json& method) {
        MethodParameters call;
        call.scalars.Add(kUnknown, 1);
        for (const json& parameter : method["parameters"]) {
            if (!parameter["optional"]) call.scalars.Add(ValueOf(parameter["name"], parameter["type"]));
        }
        return call;
    }
    static MethodParameters Without(MethodParameters call, const std::string& name) {
        call.scalars.Remove(name);
        return call;
    }
    std::string FaultOf(const Method& method, const MethodParameters& call) const {
        const auto result =
            host.Run(method.metadata->MethodName(), [&call](const auto&, auto&) { return &call; });
        EXPECT_EQ(result.resultCode, 2) << result.errorMessage;
        return result.errorMessage;
    }
    void Check(const Method& method, const json& described) const;
    void CheckParameter(const Method& method, const json& described, const json& parameter) const;

    const agent::Host host{SilentLog(), dir.Path("stores"), WithModules(dir)};
};

void MethodContracts::CheckParameter(const Method& method, const json& described,
                                     const json& parameter) const {
    const std::string name = parameter["name"], type = parameter["type"];
    SCOPED_TRACE(name);
    const MethodParameters rest = Without(Harmless(described), name);
    EXPECT_EQ(FaultOf(method, rest).find("Missing parameter '" + name + "'") == std::string::npos,
              parameter["optional"].get<bool>());
    const std::map<std::string, std::vector<std::string>> taken = {{"integer", {"integer", "boolean"}},
                                                                   {"boolean", {"boolean", "integer"}},
                                                                   {"float", {"float", "integer"}},
                                                                   {"string", {"string"}},
                                                                   {"datetime", {"string"}},
                                                                   {"table", {}}};
    for (const char* const given : {"integer", "float", "boolean", "string"}) {
        MethodParameters call = rest;
        call.scalars.Add(ValueOf(name, given));
        const auto& types = taken.at(type);
        const bool isTaken = std::find(types.begin(), types.end(), given) != types.end();
        EXPECT_EQ(FaultOf(method, call).find("Value is wrong data-type for parameter '" + name + "'") ==
                      std::string::npos,
                  isTaken)
            << given;
    }
}

/// The faults of calls tell what the method has bound: names, types and what is optional.
void MethodContracts::Check(const Method& method, const json& described) const {
    EXPECT_THAT(FaultOf(method, Harmless(described)),
                testing::HasSubstr(std::string("Undefined parameter named '") + kUnknown + "'"));
    for (const json& parameter : described["parameters"]) CheckParameter(method, described, parameter);
}

}  // namespace

TEST_F(MethodContracts, EveryMethodBindsWhatItDescribes) {
    std::size_t count = 0;
    for (const auto& module : host.GetModules()) {
        for (const Method& method : module->GetMethods()) {
            SCOPED_TRACE(method.metadata->MethodName());
            const json described = json::parse(ToJson(*method.metadata));
            if (described["name"] != kJudgesNothing) Check(method, described);
            EXPECT_FALSE(described["undocumented"] == false && described["description"] == "");
            ++count;
        }
    }
    EXPECT_EQ(count, 30u);
}

TEST_F(MethodContracts, ACallWithThreeFaultsNamesThree) {
    EXPECT_EQ(host.Run("Commands.Table", {"timeout=x", "other\x1B=1", "command=a"}).errorMessage,
              "Parameter 'timeout' must be an integer, not 'x'; Missing parameter 'columns'; "
              "Undefined parameter named 'other\x1B'");
    EXPECT_EQ(host.Run("Commands.Table", {"more=1", "command=a"}).errorMessage,
              "Missing parameter 'columns'; Undefined parameter named 'more'");
}

}  // namespace quillon::test
