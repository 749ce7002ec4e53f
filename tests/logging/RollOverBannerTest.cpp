#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>

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

namespace quillon::test {

namespace {

using Level = ICLogger::Level;
using Lines = std::vector<std::string>;
using testing::_;
using testing::ElementsAre;
using testing::StartsWith;

constexpr const char* kTitle = "--------------------------- Log roll-over ----------------------------";
const std::string kEnd(70, '-');

/// Every setting at its safe value. Holds its lock in every call, as a host's may.
struct Settings final : IAgentConfiguration {
    Settings() { ServiceLocator::Put<IAgentConfiguration>(this); }
    ~Settings() override { ServiceLocator::Remove<IAgentConfiguration>(); }
    template <class T>
    const T& Locked(const T& value) const {
        const std::lock_guard lock(mutex);
        return value;
    }
    const std::vector<SwitchEndpoint>& GetSwitches() const override { return Locked(switches); }
    const Lines& GetBackgroundChannelUrls() const override {
        if (fails) throw std::runtime_error("no settings");
        return Locked(urls);
    }
    int GetAuthenticationPolicy() const override { return Locked(policy); }
    const char* GetCrlChecks() const override { return Locked(crlChecks); }
    int GetLoggingLevel() const override { return Locked(level); }
    int GetSsl() const override { return Locked(ssl); }
    void GetModuleSettings(const std::string& module,
                           std::map<std::string, std::string>& result) const override {
        if (module == "Inventory") result = Locked(inventory);
    }
    bool GetEncryptDb() const override { return Locked(encrypt); }
    bool GetIgnoreCertificateValidationErrors() const override { return Locked(ignore); }
    bool GetSkipDigitalSignatureChecks() const override { return Locked(skip); }
    bool IsWayfarEnabled() const override { return false; }

    mutable std::mutex mutex;
    std::vector<SwitchEndpoint> switches;
    Lines urls;
    int policy = 2, level = 2, ssl = 1;
    const char* crlChecks = "hard";
    std::map<std::string, std::string> inventory;
    bool encrypt = true, ignore = false, skip = false, fails = false;
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
    /// What one roll-over writes to the registered logger.
    Lines Banner() {
        static_cast<void>(MiscUtils::GetVersionNumber(nullptr));  // says once that this program has none
        dir.Write("log", std::string(5'242'881, 'x'));
        log.Forget();
        CLogger::GetInstance()->InitializeLogging(dir.Path("log").c_str(), Level::Info);
        CLogger::GetInstance()->Info("entry");
        CLogger::GetInstance()->StopLogging();
        CLogger::ReleaseInstance();
        EXPECT_THAT(EntriesOf(dir.Read("log")), ElementsAre("INFO  - entry"));
        return log.Lines();
    }
    RecordingLogger log;
};

Lines Identification(const std::string& title) {
    const std::string today = DateTimeUtils::FormatTimeAsISO8601(DateTimeUtils::GetUtcTimeNow());
    return {title,
            "Quillon Client v" + MiscUtils::GetVersionNumber(nullptr) + " on " + NetworkUtils::GetHostName(),
            "Copyright (c) 2016-" + today.substr(0, 4) + " the makers of Quillon. All rights reserved.",
            title};
}

/// The block, but for the line that holds the time of the build.
Lines WithoutBuild(Lines lines) {
    for (auto line = lines.begin(); line != lines.end();)
        line = line->starts_with("Windows x64 release build, created ") ? lines.erase(line) : line + 1;
    return lines;
}

/// SETTINGS.log DEVICE LINES: eight threads write LINES entries each while the log rolls over.
const ChildMode flood("banner-flood", [](const std::vector<std::string>& a) {
    ICLogger& log = *CLogger::GetInstance();
    log.InitializeLogging(a[0].c_str(), Level::Info);
    ServiceLocator::Put<ICLogger>(&log);
    Settings settings;
    const Device device(std::stoi(a[1]));
    const std::string padding(9'000, '.');
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int n = 0; n < std::stoi(a[2]); ++n) {
                log.Info("%d %d %s", t, n, padding.c_str());
                const std::lock_guard lock(settings.mutex);  // what the banner asks under its own
                static_cast<void>(MiscUtils::GetVersionNumber(nullptr) + NetworkUtils::GetHostName());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
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
    Lines expected = Identification(kTitle);
    const Lines report = {
        "Subset of configured settings reported for rollover. See the configuration file for other settings:",
        "Configured 'switch' setting:",
        " -> switch 1: 'a%s:1'",
        " -> switch 2: 'b:-2'",
        "Configured 'backgroundchannelurl' setting:",
        " -> backgroundchannelurl 1: 'https://c'",
        "Configured 'authenticationpolicy' setting: 'required'",
        "Configured 'crlchecks' setting: 'hard'",
        "Configured 'logginglevel' setting: 'info'",
        "Configured 'ssl' setting: 'TLSv1.2'",
        "device",
        kEnd};
    expected.insert(expected.end(), report.begin(), report.end());
    EXPECT_EQ(WithoutBuild(Banner()), expected);
    EXPECT_EQ(log.Lines(Level::Info).size(), expected.size() + 1);
}

TEST_F(RollOverBannerTest, ReportsWhatDeviates) {
    const std::string end = " setting: '", policy = "Configured 'authenticationpolicy'" + end;
    const std::string inventory = "Configured 'module.inventory.enabled'" + end;
    const struct {
        std::function<void(Settings&)> change;
        Lines expected;
    } cases[] = {
        {[](Settings& s) { s.policy = 0; },
         {"Authentication Policy of None means a client certificate will not be "
          "presented to the Switch, which may reject the connection",
          policy + "none'"}},
        {[](Settings& s) { s.policy = 1; },
         {"Authentication Policy of Optional means a client certificate may not be "
          "presented to the Switch, which may reject the connection",
          policy + "optional'"}},
        {[](Settings& s) { s.policy = 7; }, {policy + "undefined'"}},
        {[](Settings& s) { s.policy = -1; }, {policy + "undefined'"}},
        {[](Settings& s) { s.level = 5; }, {"Configured 'logginglevel'" + end + "fatal'"}},
        {[](Settings& s) { s.level = 6; }, {"Configured 'logginglevel'" + end + "undefined'"}},
        {[](Settings& s) { s.ssl = 0; }, {"Configured 'ssl'" + end + "none'"}},
        {[](Settings& s) { s.crlChecks = nullptr; }, {"Configured 'crlchecks'" + end + "'"}},
        {[](Settings& s) { s.inventory["enabled"] = "TRUE"; }, {inventory + "true'"}},
        {[](Settings& s) { s.inventory["enabled"] = "0"; }, {inventory + "false'"}},
        {[](Settings& s) { s.inventory["enabled"] = "yes"; }, {inventory + "undefined'"}},
        {[](Settings& s) { s.inventory["Enabled"] = "1"; }, {}},
        {[](Settings& s) { s.encrypt = false; }, {"Configured 'encryptdb'" + end + "false'"}},
        {[](Settings& s) { s.ignore = s.skip = true; },
         {"Configured 'ignorecertificatevalidationerrors'" + end + "true'",
          "Configured 'skipdigitalsignaturechecks'" + end + "true'"}},
    };
    Lines usual;
    {
        const Settings settings;
        usual = Banner();
    }
    EXPECT_THAT(usual, testing::IsSupersetOf({" -> No Switch connection has been configured.",
                                              " -> No Background channel has been configured."}));
    for (const auto& c : cases) {
        Settings settings;
        c.change(settings);
        Lines lines = Banner();
        std::erase_if(
            lines, [&usual](const auto& line) { return testing::Matches(testing::Contains(line))(usual); });
        EXPECT_EQ(lines, c.expected);
        EXPECT_EQ(log.Lines(Level::Warn).size(), settings.policy == 0 ? 1u : 0u);
    }
}

TEST_F(RollOverBannerTest, MissingOrFailingServicesEndTheirOwnPartOnly) {
    EXPECT_EQ(WithoutBuild(Banner()), Identification(kTitle));
    Settings settings;
    const Device device(1);
    settings.fails = true;
    settings.encrypt = false;
    const Lines lines = WithoutBuild(Banner());
    EXPECT_THAT(Lines(lines.end() - 4, lines.end()),
                ElementsAre("A report of the log roll-over failed: no settings",
                            "Configured 'encryptdb' setting: 'false'", "device", kEnd));
    ServiceLocator::Remove<ICLogger>();
    EXPECT_THAT(Banner(), testing::IsEmpty());
}

TEST(LoggerUtils, BlockIsNotWrittenTwiceInARow) {
    RecordingLogger log;
    const auto write = [&log](bool skip) {
        log.Forget();
        LoggerUtils::LogCopyright("title", &log, skip);
        return log.Lines(Level::Info);
    };
    static_cast<void>(MiscUtils::GetVersionNumber(nullptr));
    const Lines block = write(false);
    EXPECT_EQ(WithoutBuild(block), Identification("title"));
    EXPECT_THAT(block, ElementsAre(_, _, _, testing::ContainsRegex("created ... .. 20.. ..:..:..$"), _));
    EXPECT_THAT(write(true), ElementsAre("title"));
    EXPECT_EQ(write(true), block);
    EXPECT_EQ(write(true), block);
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
