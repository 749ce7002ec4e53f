#include <gmock/gmock.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>

#include "quillon/CLogger.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/IAgentConfiguration.h"
#include "quillon/IDeviceInformation.h"
#include "quillon/LoggerUtils.h"
#include "quillon/MiscUtils.h"
#include "quillon/NetworkUtils.h"
#include "support/ChildMain.h"
#include "support/LogLines.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace quillon::test {

namespace {

using Level = ICLogger::Level;
using Lines = std::vector<std::string>;
using testing::ElementsAre;

constexpr const char* kTitle = "--------------------------- Log roll-over ----------------------------";
const std::string kEnd(70, '-');

/// Every setting at its safe value. Takes a lock, as a host's may.
struct Settings final : IAgentConfiguration {
    Settings() { ServiceLocator::Put<IAgentConfiguration>(this); }
    ~Settings() override { ServiceLocator::Remove<IAgentConfiguration>(); }
    const std::vector<SwitchEndpoint>& GetSwitches() const override {
        const std::lock_guard lock(mutex);
        return switches;
    }
    const Lines& GetBackgroundChannelUrls() const override {
        return fails ? throw std::runtime_error("no settings") : urls;
    }
    int GetAuthenticationPolicy() const override { return policy; }
    const char* GetCrlChecks() const override { return "hard"; }
    int GetLoggingLevel() const override { return level; }
    int GetSsl() const override { return ssl; }
    void GetModuleSettings(const std::string& module,
                           std::map<std::string, std::string>& result) const override {
        if (module == "Inventory") result = inventory;
    }
    bool GetEncryptDb() const override { return encrypt; }
    bool GetIgnoreCertificateValidationErrors() const override { return ignore; }
    bool GetSkipDigitalSignatureChecks() const override { return ignore; }
    bool IsWayfarEnabled() const override { return false; }

    mutable std::mutex mutex;
    std::vector<SwitchEndpoint> switches;
    Lines urls;
    int policy = 2, level = 2, ssl = 1;
    std::map<std::string, std::string> inventory;
    bool encrypt = true, ignore = false, fails = false;
};

struct Device final : IDeviceInformation {
    explicit Device(int lines) : count(lines) { ServiceLocator::Put<IDeviceInformation>(this); }
    ~Device() override { ServiceLocator::Remove<IDeviceInformation>(); }
    void LogDeviceInformation() override {
        const std::string text = "device" + std::string(count > 1 ? 9'000 : 0, '.');
        for (int n = 0; n < count; ++n) ServiceLocator::Get<ICLogger>()->Info("%s", text.c_str());
    }
    int count;
};

class RollOverBannerTest : public TempDirTest {
protected:
    /// What one roll-over writes to the registered logger after the block that identifies the agent.
    Lines Banner() {
        static_cast<void>(MiscUtils::GetVersionNumber(nullptr));  // says once that this program has none
        dir.Write("log", std::string(5'242'881, 'x'));
        log.Forget();
        CLogger::GetInstance()->InitializeLogging(dir.Path("log").c_str(), Level::Info);
        CLogger::GetInstance()->Info("entry");
        CLogger::GetInstance()->StopLogging();
        CLogger::ReleaseInstance();
        EXPECT_THAT(EntriesOf(dir.Read("log")), ElementsAre("INFO  - entry"));
        const Lines lines = log.Lines();
        EXPECT_TRUE(lines.size() < 5 || (lines[0] == kTitle && lines[4] == kTitle));
        return {lines.begin() + std::min<std::ptrdiff_t>(5, std::ssize(lines)), lines.end()};
    }
    RecordingLogger log;
};

/// LOG DEVICE LINES: eight threads write LINES entries each while the log rolls over.
const ChildMode flood("banner-flood", [](const std::vector<std::string>& a) {
    ICLogger& log = *CLogger::GetInstance();
    log.InitializeLogging(a[0].c_str(), Level::Info);
    ServiceLocator::Put<ICLogger>(&log);
    Settings settings;
    const Device device(std::stoi(a[1]));
    const std::string padding(9'000, '.');
    Threads(8, [&](int t) {
        for (int n = 0; n < std::stoi(a[2]); ++n) {
            log.Info("%d %d %s", t, n, padding.c_str());
            const std::lock_guard lock(settings.mutex);  // what the banner asks under its own
            static_cast<void>(MiscUtils::GetVersionNumber(nullptr) + NetworkUtils::GetHostName());
        }
    }).Join();
    log.StopLogging();
    ServiceLocator::Clear();
    return 0;
});

/// Checks that every file but the first begins with the banner and that no line is lost; returns the number
/// of files.
int CheckFlood(const TempDir& dir, int linesPerThread) {
    int files = 0, bad = 0;
    std::vector<int> next(8, 0);
    for (int backup = 5; backup >= 0; --backup) {
        const std::string name = backup > 0 ? "log." + std::to_string(backup) : "log";
        if (!dir.Exists(name)) continue;
        const Lines entries = EntriesOf(dir.Read(name));
        EXPECT_TRUE(files++ == 0 || entries.at(0) == std::string("INFO  - ") + kTitle) << name;
        for (const std::string& entry : entries) {
            int t = 0, n = 0;
            if (!entry.ends_with("....") || std::sscanf(entry.c_str(), "INFO  - %d %d ", &t, &n) != 2)
                continue;
            if (next.at(static_cast<std::size_t>(t))++ != n) ++bad;
        }
    }
    EXPECT_EQ(bad, 0);
    EXPECT_THAT(next, testing::Each(linesPerThread));
    return files;
}

}  // namespace

TEST_F(RollOverBannerTest, ReportsTheSettings) {
    Settings settings;
    const Device device(1);
    settings.switches = {{"a%s", 1}, {"b", -2}};
    settings.urls = {"https://c"};
    std::string report;
    for (const std::string& line : Banner()) report += line + '|';
    EXPECT_EQ(
        report,
        "Subset of configured settings reported for rollover. See the configuration file for other settings:|"
        "Configured 'switch' setting:| -> switch 1: 'a%s:1'| -> switch 2: 'b:-2'|"
        "Configured 'backgroundchannelurl' setting:| -> backgroundchannelurl 1: 'https://c'|"
        "Configured 'authenticationpolicy' setting: 'required'|Configured 'crlchecks' setting: 'hard'|"
        "Configured 'logginglevel' setting: 'info'|Configured 'ssl' setting: 'TLSv1.2'|device|" +
            kEnd + '|');
    EXPECT_EQ(log.Lines(Level::Info).size(), log.Lines().size());
}

TEST_F(RollOverBannerTest, ReportsWhatDeviates) {
    const std::string policy = "authenticationpolicy", inventory = "module.inventory.enabled";
    const std::tuple<std::function<void(Settings&)>, std::string, std::string> cases[] = {
        {[](Settings& s) { s.policy = 0; }, policy, "none"},
        {[](Settings& s) { s.policy = 1; }, policy, "optional"},
        {[](Settings& s) { s.policy = 7; }, policy, "undefined"},
        {[](Settings& s) { s.inventory["enabled"] = "TRUE"; }, inventory, "true"},
        {[](Settings& s) { s.inventory["enabled"] = "0"; }, inventory, "false"},
        {[](Settings& s) { s.inventory["enabled"] = "yes"; }, inventory, "undefined"},
        {[](Settings& s) { s.encrypt = false; }, "encryptdb", "false"},
        {[](Settings& s) { s.ignore = true; }, "ignorecertificatevalidationerrors", "true"},
        {[](Settings& s) { s.ignore = true; }, "skipdigitalsignaturechecks", "true"},
    };
    for (const auto& [change, name, value] : cases) {
        SCOPED_TRACE(name + value);
        Settings settings;
        change(settings);
        const Lines lines = Banner();
        const auto line =
            std::find(lines.begin(), lines.end(), "Configured '" + name + "' setting: '" + value + "'");
        ASSERT_NE(line, lines.end());
        EXPECT_THAT(lines, testing::IsSupersetOf({" -> No Switch connection has been configured.",
                                                  " -> No Background channel has been configured."}));
        const Lines warnings = log.Lines(Level::Warn);
        EXPECT_EQ(warnings.size(), settings.policy == 0 ? 1u : 0u);
        const std::string note = settings.policy == 0   ? warnings.at(0)
                                 : settings.policy == 1 ? *(line - 1)
                                                        : "";
        EXPECT_TRUE(note.empty() || (note.starts_with("Authentication Policy of ") && *(line - 1) == note))
            << note;
        EXPECT_EQ(lines.size(), 9u + (settings.policy < 2) + !settings.inventory.empty() + !settings.encrypt +
                                    2 * settings.ignore);
    }
}

TEST_F(RollOverBannerTest, MissingOrFailingServicesEndTheirOwnPartOnly) {
    EXPECT_THAT(Banner(), testing::IsEmpty());
    EXPECT_EQ(log.Lines().size(), 5u);
    Settings settings;
    const Device device(1);
    settings.fails = true;
    settings.encrypt = false;
    const Lines lines = Banner();
    EXPECT_THAT(Lines(lines.end() - 4, lines.end()),
                ElementsAre("A report of the log roll-over failed: no settings",
                            "Configured 'encryptdb' setting: 'false'", "device", kEnd));
    ServiceLocator::Remove<ICLogger>();
    Banner();
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST(LoggerUtils, BlockIsNotWrittenTwiceInARow) {
    RecordingLogger log;
    const std::string version = MiscUtils::GetVersionNumber(nullptr), host = NetworkUtils::GetHostName();
    const std::string year = DateTimeUtils::FormatTimeAsISO8601(DateTimeUtils::GetUtcTimeNow()).substr(0, 4);
    const testing::Matcher<const Lines&> block = ElementsAre(
        "title", "Quillon Client v" + version + " on " + host, testing::HasSubstr('-' + year + ' '),
        testing::MatchesRegex("Windows x64 release build, created ... .. 20.. ..:..:.."), "title");
    for (const auto& [skip, whole] : {std::pair(false, true), {true, false}, {true, true}, {true, true}}) {
        SCOPED_TRACE(skip);
        log.Forget();
        LoggerUtils::LogCopyright("title", &log, skip);
        EXPECT_THAT(log.Lines(Level::Info), testing::Conditional(whole, block, ElementsAre("title")));
    }
}

TEST_F(RollOverBannerTest, ThreadsLoseNoLineAndTakeNoLocksInBothOrders) {
    EXPECT_TRUE(RunChild("banner-flood", {dir.Path("log"), "1", "330"}).succeeded);
    EXPECT_EQ(CheckFlood(dir, 330), 5);
}

TEST_F(RollOverBannerTest, ReportLongerThanAFileDoesNotRollItOver) {
    const ChildOutput child = RunChild("banner-flood", {dir.Path("log"), "600", "80"});
    EXPECT_TRUE(child.succeeded) << child.err;
    EXPECT_LE(CheckFlood(dir, 80), 3);
}

}  // namespace quillon::test
