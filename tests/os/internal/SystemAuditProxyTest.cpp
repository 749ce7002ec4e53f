#include "quillon/SystemAuditProxy.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <new>

#include "logging/internal/RollingLog.h"
#include "os/AuditState.h"
#include "os/HolderCount.h"
#include "quillon/AuditHolder.h"
#include "quillon/StringUtils.h"
#include "simulation/audit/AuditPolicy.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace quillon::test {

namespace {

using simulation::AuditPolicy;
using simulation::Modules;
using testing::ElementsAre;

const std::string kId = "0cce922b-69ae-11d9-bed3-505054503030";
const std::string kGuid = "{0CCE922B-69AE-11D9-BED3-505054503030}";
const std::string kOtherId = "0cce9210-69ae-11d9-bed3-505054503030";
const std::string kOn = "Enabled token privilege 'SeSecurityPrivilege'";
const std::string kOff = "Disabled token privilege 'SeSecurityPrivilege'";
const std::string kEnabled = "Enabled success + failure auditing on audit sub-category '" + kGuid + "'";
const std::string kDisabled = "Disabled success + failure auditing on audit sub-category '" + kId + "'";
const std::string kStarted = "Started to monitor for audit policy change notifications";
const std::string kStopped = "Stopped monitoring for audit policy change notifications";
const std::string kReview[] = {
    "The Agent enabled extended security auditing on this machine, but could not disable it",
    "The audit configuration policy for this machine may have to be reviewed with auditpol.exe"};
const std::string kNoToken = "Failed to get effective token for process security adjustment";
const std::string kNoPrivilege = "Failed to enable 'SeSecurityPrivilege' for system audit policy interaction";
constexpr std::uint32_t kCode = 5;

UniqueIdentifier Id(const std::string& text) {
    bool ok = false;
    return UniqueIdentifier::Parse(text, &ok);
}

bool Enable(const std::string& id = kId) { return SystemAuditProxy::EnableAuditLogSubCategory(Id(id)); }
void Disable(const std::string& id = kId) { SystemAuditProxy::DisableAuditLogSubCategory(Id(id)); }

/// The simulated policy, which notifies only when a test wants it to.
class SystemAuditProxyTest : public testing::Test {
protected:
    SystemAuditProxyTest() {
        platform::ReplaceAuditCalls(policy.Calls());
        policy.Reset();
        policy.Mute(true);
        Bind();
    }
    ~SystemAuditProxyTest() override {
        policy.GetWaits().AwaitQuiet();
        EXPECT_EQ(policy.CountLeftOver() + policy.GetWaits().CountEvents() + policy.GetWaits().CountWaits(),
                  0u);
        EXPECT_FALSE(policy.IsPrivilegeEnabled());
        platform::ReplaceAuditCalls(platform::SystemAuditCalls());
        platform::ReplaceProcedureCalls(platform::SystemProcedureCalls());
        AuditState::Get().ForgetFunctions();
    }

    void Bind() {
        modules.Set("advapi32.dll", AuditPolicy::Exports());
        platform::ReplaceProcedureCalls(modules.Calls());
        AuditState::Get().ForgetFunctions();
    }
    std::uint32_t State(const std::string& id = kId) { return policy.State(Id(id).ToMsGuid()); }
    void SetState(std::uint32_t bits, const std::string& id = kId) {
        policy.SetState(Id(id).ToMsGuid(), bits);
    }
    void Notify() {
        policy.NotifyChange();
        policy.GetWaits().AwaitQuiet();
    }

    AuditPolicy& policy = AuditPolicy::Machine();
    Modules modules;
    RecordingLogger log;
};

}  // namespace

TEST_F(SystemAuditProxyTest, LastHolderSwitchesOffWhatTheProxySwitchedOn) {
    EXPECT_TRUE(Enable());
    EXPECT_THAT(log.Lines(),
                ElementsAre("Initialized SystemAuditProxy - system audit policy functionality is available",
                            kOn, kEnabled, kStarted, kOff));
    log.Forget();
    EXPECT_TRUE(Enable());
    Disable();
    Disable(kOtherId);
    EXPECT_EQ(State(), 3u);
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    Disable();
    EXPECT_EQ(State(), 0u);
    EXPECT_THAT(log.Lines(), ElementsAre(kOn, kDisabled, kOff, kStopped));
}

TEST_F(SystemAuditProxyTest, WhatWasAuditedBeforeIsLeftAlone) {
    for (const std::uint32_t before : {1u, 2u, 3u}) {
        SCOPED_TRACE(before);
        SetState(before);
        EXPECT_TRUE(Enable());
        EXPECT_EQ(State(), 3u);
        Disable();
        EXPECT_EQ(State(), before == 3 ? 3u : 0u);
    }
}

TEST_F(SystemAuditProxyTest, WhatPolicySwitchedOffIsSwitchedOnAgainAndBelongsToTheProxyThen) {
    SetState(3);
    Enable();
    Enable(kOtherId);
    SetState(1);
    log.Forget();
    Notify();
    const std::string reaffirm = " -> Reaffirming audit policy for subcategory ";
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("Detected change of system audit policy", kOn,
                    reaffirm + kOtherId + " (have 1 references)", reaffirm + kId + " (have 1 references)",
                    " -> Reapplying success + failure audit policy for subcategory " + kId, kEnabled,
                    "Re-applied success + failure auditing on 1 subcategories (which had been "
                    "disabled by local or group policy refresh)",
                    kOff));
    log.Forget();
    policy.FailNext("openThreadToken", kCode);
    Notify();
    EXPECT_THAT(log.Lines(), ElementsAre("Detected change of system audit policy", kNoToken));
    Disable();
    Disable(kOtherId);
    EXPECT_EQ(State(), 0u);
}

TEST_F(SystemAuditProxyTest, WhatTheSystemLacksIsToldOnce) {
    const auto without = [this](const char* name) { modules.RemoveEntryPoint("Advapi32.dll", name); };
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] {
             auto calls = modules.Calls();
             calls.isSystemAtLeast = [](std::uint32_t major, std::uint32_t minor, std::uint32_t servicePack) {
                 return std::tuple(major, minor, servicePack) < std::tuple(6u, 0u, 0u);
             };
             platform::ReplaceProcedureCalls(calls);
         },
         "Detected Windows XP or below"},
        {[&] { modules.Remove("advapi32.dll"); }, "Failed to get a reference to advapi32.dll"},
        {[&] { without("AuditQuerySystemPolicy"); }, "Entry-point for AuditQuerySystemPolicy was not found"},
        {[&] { without("AuditSetSystemPolicy"); }, "Entry-point for AuditSetSystemPolicy was not found"},
        {[&] { without("AuditFree"); }, "Entry-point for AuditFree was not found"},
    };
    for (const auto& [remove, reason] : cases) {
        SCOPED_TRACE(reason);
        Bind();
        remove();
        EXPECT_FALSE(Enable());
        EXPECT_FALSE(Enable());
        Disable();
        EXPECT_THAT(log.Lines(ICLogger::Level::Warn),
                    ElementsAre(reason + " - system audit policy functionality will not be available"));
        EXPECT_EQ(log.Lines().size(), 1u);
        log.Forget();
    }
}

TEST_F(SystemAuditProxyTest, FailuresToEnableHoldNothing) {
    const std::string text = StringUtils::GetErrorAsString(kCode);
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"openThreadToken", {kNoToken}},
        {"openProcessToken", {kNoToken}},
        {"setPrivilege", {kNoPrivilege}},
        {"AuditQuerySystemPolicy", {"Failed to query system audit policy - " + text}},
        {"AuditSetSystemPolicy",
         {"Failed to enable success + failure auditing on audit sub-category '" + kGuid + "' - " + text}},
    };
    for (const auto& [call, errors] : cases) {
        SCOPED_TRACE(call);
        policy.FailNext(call, kCode);
        EXPECT_FALSE(Enable());
        EXPECT_EQ(log.Lines(ICLogger::Level::Error), errors);
        EXPECT_EQ(policy.GetWaits().CountWaits(), 0u);
        log.Forget();
    }
}

TEST_F(SystemAuditProxyTest, WithoutMemoryToEnableNothingIsHeldOrSwitchedOn) {
    auto calls = policy.Calls();
    calls.makeEvent = []() -> HANDLE { throw std::bad_alloc(); };
    platform::ReplaceAuditCalls(calls);
    for (const std::uint32_t bits : {0u, 1u}) {
        SetState(bits);
        EXPECT_THROW(Enable(), std::bad_alloc);
        EXPECT_EQ(State(), bits);
    }
    platform::ReplaceAuditCalls(policy.Calls());
    EXPECT_TRUE(Enable());
    EXPECT_EQ(State(), 3u);
    Disable();
}

TEST_F(SystemAuditProxyTest, FailuresToDisableLetGoAndAskForAReview) {
    for (const char* const call : {"openThreadToken", "AuditSetSystemPolicy"}) {
        SCOPED_TRACE(call);
        Enable();
        log.Forget();
        policy.FailNext(call, kCode);
        Disable();
        EXPECT_EQ(State(), 3u);
        EXPECT_THAT(log.Lines(ICLogger::Level::Warn), ElementsAre(kReview[0], kReview[1]));
        EXPECT_EQ(log.Lines().back(), kStopped);
        SetState(0);
    }
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                ElementsAre("Failed to disable success + failure auditing on audit sub-category '" + kId +
                            "' - " + StringUtils::GetErrorAsString(kCode)));
}

TEST_F(SystemAuditProxyTest, WorksWithoutNotifications) {
    const std::pair<const char*, std::string> cases[] = {
        {"makeEvent", "failed to register wait on handle"},
        {"registerWait", "failed to register wait on handle"},
        {"registerPolicyChange", "failed to register for change notifications"}};
    for (const auto& [call, reason] : cases) {
        SCOPED_TRACE(call);
        policy.FailNext(call, kCode);
        EXPECT_TRUE(Enable());
        EXPECT_THAT(log.Lines(ICLogger::Level::Warn),
                    ElementsAre("Cannot monitor for changes to audit policy - " + reason));
        policy.GetWaits().AwaitQuiet();
        EXPECT_EQ(policy.CountLeftOver() + policy.GetWaits().CountEvents(), 0u);
        Disable();
        EXPECT_EQ(State(), 0u);
        log.Forget();
    }
}

TEST_F(SystemAuditProxyTest, StopsWhileACallbackWaitsForIt) {
    Enable();
    log.Forget();
    policy.Mute(false);  // switching off notifies
    policy.AfterSet([this] { policy.GetWaits().AwaitCallback(); });
    Disable();
    policy.GetWaits().AwaitQuiet();
    EXPECT_EQ(State(), 0u);
    EXPECT_THAT(log.Lines(ICLogger::Level::Info), ElementsAre("Detected change of system audit policy"));
}

TEST_F(SystemAuditProxyTest, ThreadsShareSubcategories) {
    policy.Mute(false);
    Threads(8, [](int t) {
        for (int n = 0; n < 200 / QUILLON_TEST_SLOWDOWN; ++n) {
            const std::string& id = (n + t) % 2 == 0 ? kId : kOtherId;
            EXPECT_TRUE(Enable(id));
            Disable(id);
        }
    }).Join();
    EXPECT_EQ(State() + State(kOtherId), 0u);
}

namespace {

/// Writes the entries of Info to a file that rolls over.
class RollingLogger final : public LoggerBase {
public:
    explicit RollingLogger(RollingLog& file) : m_file(file) {}

private:
    void Write(Level level, const char*, std::va_list) override {
        if (level == Level::Info) m_file.Write("entry");
    }

    RollingLog& m_file;
};

}  // namespace

TEST_F(SystemAuditProxyTest, LogMayRollOverAndComeBackWhileACallbackReports) {
    const TempDir dir;
    dir.Write("log", std::string(5'242'881, 'x'));
    int rolled = 0;
    RollingLog file(dir.Path("log"), [&rolled] {
        ++rolled;
        EXPECT_TRUE(Enable());
        Disable();
    });
    RollingLogger logger(file);
    Enable();
    ServiceLocator::Remove<ICLogger>();
    ServiceLocator::Put<ICLogger>(&logger);
    Notify();
    ServiceLocator::Remove<ICLogger>();
    EXPECT_EQ(rolled, 1);
    Disable();
}

TEST(HolderCount, EndsAtTheLargest) {
    std::uint32_t count = std::numeric_limits<std::uint32_t>::max() - 1;
    EXPECT_TRUE(AddHolder(count));
    EXPECT_FALSE(AddHolder(count));
    EXPECT_EQ(count, std::numeric_limits<std::uint32_t>::max());
}

TEST_F(SystemAuditProxyTest, WhatAKilledProcessLeftOnIsRestoredAtTheNextStart) {
    const TempDir dir;
    const std::string record = dir.Path("record");
    SetState(1);
    SystemAuditProxy::KeepRecordIn(record);
    {
        const AuditHolder first(Id(kId)), second(Id(kOtherId));
        EXPECT_TRUE(first && second);
        dir.Write("killed", dir.Read("record"));  // as the process would leave it
    }
    EXPECT_FALSE(dir.Exists("record"));

    SetState(3), SetState(3, kOtherId);
    const std::string left = dir.Read("killed");
    for (const char* const name : {"record", "record.new"}) {
        SCOPED_TRACE(name);
        dir.Write(name, "no identifier 1\n" + left + "cut");
        log.Forget();
        SetState(3), SetState(3, kOtherId);
        AuditState::Get().ForgetFunctions();  // as in another process
        SystemAuditProxy::KeepRecordIn(record);
        EXPECT_EQ(State(), 1u);
        EXPECT_EQ(State(kOtherId) & 3u, 0u);
        EXPECT_EQ(log.Lines(ICLogger::Level::Info).size(), 2u);
        EXPECT_FALSE(dir.Exists("record") || dir.Exists("record.new"));
    }
    dir.Write("record", left);
    policy.FailNext("AuditSetSystemPolicy", kCode);
    SystemAuditProxy::KeepRecordIn(record);
    EXPECT_EQ(std::count(left.begin(), left.end(), '\n'), 2);
    EXPECT_EQ(dir.Read("record").size(), left.size() / 2);  // one is tried again
    SystemAuditProxy::KeepRecordIn(record);
    EXPECT_FALSE(dir.Exists("record"));
}

TEST_F(SystemAuditProxyTest, WhatAKilledProcessLeftOnIsSwitchedOffByAHolderThatCameFirst) {
    const TempDir dir;
    dir.Write("record", kId + " 0\n");
    SetState(3);
    ASSERT_TRUE(Enable());
    SystemAuditProxy::KeepRecordIn(dir.Path("record"));
    EXPECT_EQ(dir.Read("record"), kId + " 0\n");
    EXPECT_EQ(State(), 3u);
    policy.FailNext("AuditSetSystemPolicy", kCode);
    Disable();
    EXPECT_EQ(dir.Read("record"), kId + " 0\n");
    SetState(0);
    ASSERT_TRUE(Enable());
    Disable();
    EXPECT_FALSE(dir.Exists("record")) << "what could be switched off at last is no more to be restored";
}

TEST_F(SystemAuditProxyTest, WhatARefreshHasSwitchedOffIsWrittenDownBeforeItIsSwitchedOn) {
    const TempDir dir;
    SystemAuditProxy::KeepRecordIn(dir.Path("record"));
    SetState(3);
    ASSERT_TRUE(Enable());
    EXPECT_FALSE(dir.Exists("record"));
    SetState(1);
    std::string atSetting;
    policy.AfterSet([&] { atSetting = dir.Exists("record") ? dir.Read("record") : "none"; });
    Notify();
    policy.AfterSet(nullptr);
    EXPECT_EQ(atSetting, kId + " 1\n");
    EXPECT_EQ(State(), 3u);
    Disable();
    EXPECT_FALSE(dir.Exists("record"));
}

}  // namespace quillon::test
