#include <gmock/gmock.h>

#include "examples/RunAgent.h"
#include "host/AgentConfiguration.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using agent::AgentConfiguration;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

std::string FaultOf(const std::string& file) {
    try {
        AgentConfiguration::Load(file);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

}  // namespace

TEST(AgentConfiguration, ReadsEverySettingOfTheSample) {
    const auto read = AgentConfiguration::Load(QUILLON_AGENT_SOURCES "/quillon-agent.json");
    ASSERT_EQ(read.GetSwitches().size(), 2u);
    EXPECT_EQ(read.GetSwitches()[1].host, "switch-2.example.com");
    EXPECT_EQ(read.GetSwitches()[1].port, 17472);
    EXPECT_THAT(read.GetBackgroundChannelUrls(), ElementsAre("https://background.example.com:443/channel"));
    EXPECT_EQ(read.GetAuthenticationPolicy(), 2);
    EXPECT_STREQ(read.GetCrlChecks(), "soft");
    EXPECT_EQ(read.GetLoggingLevel(), 2);
    EXPECT_EQ(read.GetSsl(), 1);
    EXPECT_TRUE(read.GetEncryptDb() && read.IsWayfarEnabled());
    EXPECT_FALSE(read.GetIgnoreCertificateValidationErrors() || read.GetSkipDigitalSignatureChecks());
    std::map<std::string, std::string> settings;
    read.GetModuleSettings("inventory", settings);
    EXPECT_TRUE(settings.empty());
    read.GetModuleSettings("Inventory", settings);
    EXPECT_THAT(settings, ElementsAre(std::pair("folders", "C:\\Tools"), std::pair("interval", "3600")));
}

TEST(AgentConfiguration, NamesEveryFaultWithItsKeyAndLine) {
    const struct {
        const char* document;
        std::vector<std::string> faults;
    } cases[] = {
        {"{}", {}},
        {"\xEF\xBB\xBF{\"ssl\":\r\n\"none\"}", {}},
        {"", {"line 1: not JSON"}},
        {"[]", {"line 1: The document must be an object"}},
        {"{\n\"ssl\": \"none\",\n\n}", {"line 4: not JSON at or after 'ssl'"}},
        {"{\"encryptDb\": tru\xC3", {"line 1: not JSON at or after 'encryptDb'"}},
        {"{\"crlChecks\": \"\xFF\"}", {"line 1: not JSON at or after 'crlChecks'"}},
        {"{\n\"Ssl\": {\"ssl\": [1, {}]},\n\"modules\": {\"m\": {\"n\":\n1}}}",
         {"line 2: 'Ssl' is no setting", "line 4: 'modules.m.n' must be a text"}},
        {"{\n\"ssl\": \"none\",\n\"ssl\": null,\n\"encryptDb\": 1}",
         {"line 3: 'ssl' is given twice", "line 3: 'ssl' must be \"none\" or \"tls1.2\"",
          "line 4: 'encryptDb' must be true or false"}},
        {"{\"switches\": [\n{\"port\": 65536},\n7\n]}",
         {"line 2: 'switches[0].port' must be an integer from 1 to 65535",
          "line 2: 'switches[0].host' is missing", "line 3: 'switches[1]' must be an object"}},
        {"{\"switches\": [{\"host\": \"h\", \"port\": 1.0}],\n\"modules\": []}",
         {"line 1: 'switches[0].port' must be an integer from 1 to 65535",
          "line 2: 'modules' must be an object"}},
        {"{\"backgroundChannelUrls\": [\n\"https://h/\",\n\"ftp://h/\"]}",
         {"line 3: 'backgroundChannelUrls[1]' must be a URL of http or https"}},
        {"{\"backgroundChannelUrls\": [\"http://h:99999999999/\", \"http://h\\u0000/\", \"http://h:65536\"]}",
         {"line 1: 'backgroundChannelUrls[0]' must be a URL of http or https",
          "line 1: 'backgroundChannelUrls[1]' must be a URL of http or https",
          "line 1: 'backgroundChannelUrls[2]' must be a URL of http or https"}},
        // names that look like places
        {"{\"switches[].host\": \"h\"}", {"line 1: 'switches[].host' is no setting"}},
        {"{\"switches[]\": {}}", {"line 1: 'switches[]' is no setting"}},
        {"{\"modules.*.*\": \"\", \"\\u001b[2J\": 1}",
         {"line 1: 'modules.*.*' is no setting", "line 1: '\\x1B[2J' is no setting"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.document);
        agent::AgentSettings settings;
        std::vector<std::string> faults;
        EXPECT_EQ(agent::ReadSettings(c.document, settings, faults), c.faults.empty());
        EXPECT_THAT(faults, ElementsAreArray(c.faults));
    }
}

TEST(AgentConfiguration, HasLimits) {
    const TempDir dir;
    std::string many = "{\"switches\":[{}";
    for (int i = 0; i < 5000; ++i) many += ",{}";
    const std::string faults = FaultOf(dir.Write("many", many));
    EXPECT_EQ(std::count(faults.begin(), faults.end(), '\n'), 99);
    EXPECT_THAT(FaultOf(dir.Write("deep", std::string(1'000'000, '['))), HasSubstr("deep: line 1: "));
    EXPECT_EQ(FaultOf(dir.Write("full", "{}" + std::string(1024 * 1024 - 2, ' '))), "");
    EXPECT_THAT(FaultOf(dir.Write("large", "{}" + std::string(1024 * 1024 - 1, ' '))), HasSubstr("1 MiB"));
}

TEST(AgentConfiguration, IsCheckedBeforeTheAgentStarts) {
    const TempDir dir;
    const auto run = [&dir](const std::string& file) {
        return RunAgent({"run", "System.Echo", "text=x", "--config", dir.Native(file).string()});
    };
    EXPECT_EQ(run("missing").exitCode, 1);
    EXPECT_THAT(run("missing").errors,
                HasSubstr("missing: the configuration cannot be read: No such file or directory"));
    dir.Write("bad.json", "{\n\"ssl\": 1}");
    EXPECT_EQ(run("bad.json").output, "");
    EXPECT_THAT(run("bad.json").errors, HasSubstr("bad.json: line 2: 'ssl' must be"));
    dir.Write("good.json", "{\"loggingLevel\": \"trace\"}");
    EXPECT_EQ(run("good.json").exitCode, 0);
    EXPECT_EQ(RunAgent({"run", "System.Echo", "text=x", "--config="}).exitCode, 2);
}

}  // namespace quillon::test
