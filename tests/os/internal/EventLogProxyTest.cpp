#include "quillon/EventLogProxy.h"

#include "os/internal/EventLogTest.h"
#include "platform/ErrorText.h"
#include "quillon/EventLogReader.h"
#include "quillon/EvtHandle.h"
#include "support/Threads.h"

namespace quillon::test {

namespace {

using EventLogProxyTest = EventLogTest;

constexpr const wchar_t* kChannel = L"Maker-Part/Kanal \u00E4";
constexpr const wchar_t* kSameChannel = L"MAKER-part/kanal \u00E4";
const std::string kName = "Maker-Part/Kanal \xC3\xA4";

bool Enable(const wchar_t* channel = kChannel) { return EventLogProxy::EnableChannelIfRequired(channel); }
void Disable(const wchar_t* channel = kChannel) { EventLogProxy::DisableChannelIfRequired(channel); }

}  // namespace

TEST_F(EventLogProxyTest, WhatTheSystemLacksIsToldOnceAndNothingWorks) {
    const auto replace = [this](auto platform::ProcedureCalls::*member, auto function) {
        auto calls = modules.Calls();
        calls.*member = function;
        platform::ReplaceProcedureCalls(calls);
    };
    std::vector<std::pair<std::function<void()>, std::string>> cases{
        {[&] { replace(&platform::ProcedureCalls::isSystemAtLeast, [](auto, auto, auto) { return false; }); },
         "Detected Windows XP or below"},
        {[&] { replace(&platform::ProcedureCalls::systemDirectory, [] { return std::nullopt; }); },
         "Failed to load wevtapi.dll"},
        {[&] { modules.Remove("wevtapi.dll"); }, "Failed to load wevtapi.dll"},
    };
    for (const char* const name :
         {"EvtSubscribe", "EvtClose", "EvtCreateRenderContext", "EvtRender", "EvtCreateBookmark",
          "EvtUpdateBookmark", "EvtQuery", "EvtNext", "EvtOpenChannelConfig", "EvtGetChannelConfigProperty",
          "EvtSetChannelConfigProperty", "EvtSaveChannelConfig"}) {
        cases.emplace_back([this, name] { modules.RemoveEntryPoint("wevtapi.dll", name); },
                           std::string("Entry-point for ") + name + " was not found");
    }
    events.AddChannel(kName, false);
    for (const auto& [remove, reason] : cases) {
        SCOPED_TRACE(reason);
        Bind();
        remove();
        EventLogProxy::Initialize(log);
        EventLogProxy::Initialize(log);
        EXPECT_THAT(
            log.Lines(ICLogger::Level::Warn),
            testing::ElementsAre(reason + " - event log subscription functionality will not be available"));
        EXPECT_FALSE(EventLogProxy::IsAvailable());
        EXPECT_FALSE(Enable());
        Disable();
        EXPECT_EQ(EventLogProxy::EvtQuery(nullptr, kChannel, nullptr, 1), nullptr);
        EXPECT_EQ(platform::LastError(), 120u);
        EXPECT_EQ(log.Lines().size(), 1u);
        log.Forget();
    }
}

TEST_F(EventLogProxyTest, LibraryIsLoadedFromTheSystemsOwnFolder) {
    for (const char* const folder : {"D:\\System", "D:\\System\\"}) {
        SCOPED_TRACE(folder);
        Bind();
        auto calls = modules.Calls();
        std::string loaded;
        calls.systemDirectory = [folder] { return std::optional<std::string>(folder); };
        calls.loadModule = [&, load = calls.loadModule](const std::string& path) {
            return load(loaded = path);
        };
        platform::ReplaceProcedureCalls(calls);
        EventLogProxy::Initialize(log);
        EXPECT_TRUE(EventLogProxy::IsAvailable());
        EXPECT_EQ(loaded, "D:\\System\\wevtapi.dll");
    }
    EXPECT_EQ(log.Lines(ICLogger::Level::Debug),
              std::vector<std::string>(
                  2, "Initialized EventLogProxy - event log subscription functionality is available"));
}

TEST_F(EventLogProxyTest, LastHolderSwitchesOffWhatTheProxySwitchedOn) {
    events.AddChannel(kName, false);
    events.AddChannel("On", true);
    EXPECT_TRUE(Enable());
    EXPECT_TRUE(Enable(kSameChannel));
    EXPECT_TRUE(Enable(L"on"));
    Disable();
    Disable(L"on");
    Disable(L"never");
    EXPECT_TRUE(events.IsEnabled(kName));
    Disable(kSameChannel);
    EXPECT_FALSE(events.IsEnabled(kName));
    EXPECT_TRUE(events.IsEnabled("On"));
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                testing::ElementsAre(
                    "Enabled Windows Event Log channel '" + kName + "' for subscriptions",
                    "Disabled Windows Event Log channel 'MAKER-part/kanal \xC3\xA4' for subscriptions"));
}

TEST_F(EventLogProxyTest, FailuresLeaveNothingHeld) {
    const std::string notEnabled = "Failed to enable Windows Event Log channel '" + kName +
                                   "' - subscriptions to this channel will not be possible";
    const std::string notDisabled = "Failed to disable Windows Event Log channel '" + kName +
                                    "' - this channel should be disabled manually";
    const std::tuple<const char*, std::vector<std::string>, std::vector<std::string>> cases[] = {
        {"EvtOpenChannelConfig", {}, {}},
        {"EvtGetChannelConfigProperty",
         {},
         {"Disabled Windows Event Log channel '" + kName + "' for subscriptions"}},
        {"EvtSetChannelConfigProperty", {notEnabled}, {notDisabled}},
        {"EvtSaveChannelConfig", {notEnabled}, {notDisabled}},
    };
    for (const auto& [entryPoint, enabling, disabling] : cases) {
        SCOPED_TRACE(entryPoint);
        events.Reset();
        events.AddChannel(kName, false);
        log.Forget();
        events.FailNext(entryPoint, 5);
        EXPECT_FALSE(Enable());
        EXPECT_EQ(log.Lines(), enabling);
        EXPECT_TRUE(Enable());
        log.Forget();
        events.FailNext(entryPoint, 5);
        Disable();
        EXPECT_EQ(log.Lines(), disabling);
        EXPECT_TRUE(EventLogState::Get().channels.empty());
    }
    EXPECT_FALSE(Enable(L"missing"));
}

TEST_F(EventLogProxyTest, SubscriptionsDeliverFromABookmarkOn) {
    events.AddChannel("C", true);
    for (const char* const message : {"one", "two"}) Write("C", message);
    const EvtHandle mark(EventLogProxy::EvtCreateBookmark(
        L"<BookmarkList><Bookmark Channel='C' RecordId='1' IsCurrent='true'/></BookmarkList>"));
    std::vector<LogEvent> delivered;
    const auto take = [](EVT_SUBSCRIBE_NOTIFY_ACTION action, void* context, void* event) {
        EXPECT_EQ(action, EvtSubscribeActionDeliver);
        auto& taken = *static_cast<std::vector<LogEvent>*>(context);
        EXPECT_TRUE(EventLogReader::Read(event, taken.emplace_back()));
        return 0UL;
    };
    const EvtHandle subscription(
        EventLogProxy::EvtSubscribe(nullptr, nullptr, L"c", L"*", mark.Get(), &delivered, take, 0x10003));
    ASSERT_TRUE(subscription);
    Write("C", "<three>");
    ASSERT_EQ(delivered.size(), 2u);
    EXPECT_EQ(delivered[0].recordId, 2u);
    EXPECT_THAT(delivered[1].xml, testing::HasSubstr("<Data>&lt;three&gt;</Data>"));
}

TEST_F(EventLogProxyTest, ThreadsShareChannels) {
    events.AddChannel("A", false);
    events.AddChannel("B", false);
    Threads(8, [](int t) {
        for (int n = 0; n < 500 / QUILLON_TEST_SLOWDOWN; ++n) {
            const wchar_t* const channel = (n + t) % 2 == 0 ? L"A" : L"b";
            EXPECT_TRUE(Enable(channel));
            Disable(channel);
        }
    }).Join();
    EXPECT_FALSE(events.IsEnabled("A") || events.IsEnabled("B"));
}

}  // namespace quillon::test
