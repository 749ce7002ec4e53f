#include "os/internal/EventLogTest.h"
#include "support/System.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

namespace {

using EventLogMemoryTest = EventLogTest;

}  // namespace

TEST_F(EventLogMemoryTest, WithoutMemoryNoChannelIsOnThatNobodyHolds) {
    if (kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    constexpr const wchar_t* kChannel = L"A channel whose name takes memory";
    const std::string name = "A channel whose name takes memory";
    events.AddChannel(name, false);
    const auto& held = EventLogState::Get().channels;
    const auto enable = [&] { EXPECT_TRUE(EventLogProxy::EnableChannelIfRequired(kChannel)); };
    const auto disable = [&] { EventLogProxy::DisableChannelIfRequired(kChannel); };
    for (int before = 0; Starve(before, enable); ++before) {
        SCOPED_TRACE(before);
        EXPECT_EQ(events.IsEnabled(name), !held.empty());
        if (!held.empty()) disable();
    }
    for (int before = 0; Starve(before, disable); ++before) {
        SCOPED_TRACE(before);
        if (!held.empty()) disable();
        EXPECT_TRUE(held.empty());
        events.AddChannel(name, false);
        enable();
    }
}

}  // namespace quillon::test
