#include <gmock/gmock.h>

#include <future>

#include "platform/AuditApi.h"
#include "platform/ErrorText.h"
#include "platform/ProcedureApi.h"

namespace quillon::test {

TEST(SystemProcedures, AreFoundByName) {
    const auto calls = platform::SystemProcedureCalls();
    EXPECT_TRUE(calls.isSystemAtLeast(6, 0, 0));
    EXPECT_FALSE(calls.isSystemAtLeast(99, 0, 0));
    const HINSTANCE advapi = calls.loadedModule("Advapi32.dll");
    ASSERT_NE(advapi, nullptr);
    EXPECT_NE(calls.findProcedure(advapi, "RegCloseKey"), nullptr);
    EXPECT_EQ(calls.findProcedure(advapi, "NoSuchFunction"), nullptr);
    EXPECT_EQ(calls.loadedModule("nosuch.dll"), nullptr);
    const auto folder = calls.systemDirectory();
    ASSERT_TRUE(folder);
    EXPECT_NE(calls.loadModule(*folder + "\\version.dll"), nullptr);
    EXPECT_EQ(calls.loadModule(*folder + "\\nosuch.dll"), nullptr);
}

TEST(SystemAudit, TokensAndWaitsAreTheSystems) {
    const auto calls = platform::SystemAuditCalls();
    EXPECT_EQ(calls.openThreadToken(), nullptr);
    EXPECT_EQ(platform::LastError(), 1008u);
    const platform::AuditToken token(calls.openProcessToken());
    ASSERT_TRUE(token);
    EXPECT_TRUE(calls.setPrivilege(token.Get(), L"SeChangeNotifyPrivilege", true));
    EXPECT_FALSE(calls.setPrivilege(token.Get(), L"SeNoSuchPrivilege", true));

    static std::promise<void> called;
    const platform::AuditEvent event(calls.makeEvent());
    HANDLE wait = nullptr;
    ASSERT_TRUE(calls.registerWait(wait, event.Get(), [](void* context, unsigned char timedOut) {
        EXPECT_EQ(context, nullptr);
        EXPECT_EQ(timedOut, 0);
        called.set_value();
    }));
    const platform::AuditWait owner(wait);
    ASSERT_NE(::SetEvent(event.Get()), 0);
    called.get_future().wait();
}

}  // namespace quillon::test
