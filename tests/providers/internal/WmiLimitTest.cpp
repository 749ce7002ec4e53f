#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "WmiFixture.h"
#include "providers/WmiCaller.h"
#include "quillon/SelfMetrics.h"
#include "support/ChildMain.h"

namespace quillon::test {

namespace {

using simulation::WmiCall;

constexpr auto kTimedOut = static_cast<std::int32_t>(0x800705B4);
constexpr auto kShuttingDown = static_cast<std::int32_t>(0x800704C7);
constexpr auto kNoResources = static_cast<std::int32_t>(0x800705AA);

/// A repository whose calls can be held; all of them have ended when the test does.
class WmiLimitTest : public WmiTest {
protected:
    ~WmiLimitTest() override { EXPECT_TRUE(LetGo()); }

    /// False when a call that was left behind has not ended after half a minute.
    bool LetGo() {
        repository.LetGo();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (WmiCaller::LeftBehind() != 0 && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return WmiCaller::LeftBehind() == 0;
    }
    bool Query() { return connector.ExecuteQuery("SELECT * FROM Item", &table); }
};

long long LeftBehindInMetrics() {
    for (const VariantList& row : SelfMetrics()) {
        if (row.Get("Name").GetStringValue() == "WmiCallsLeftBehind")
            return row.Get("Value").GetLongLongValue();
    }
    return -1;
}

}  // namespace

TEST_F(WmiLimitTest, ACallThatNeverReturnsIsLeftBehindAfterTheDeadline) {
    methods = {{L"Do", {}, {}, {}, true}};
    AddItems(1);
    const DataTable update(VariantList(Variant("Number", 1)));
    const auto run = [this, &update](WmiCall call) {
        switch (call) {
            case WmiCall::ConnectServer:
                return connector.Connect(kNamespace);
            case WmiCall::PutInstance:
                return connector.ExecuteUpdateAll(L"SELECT * FROM Item", &update, nullptr);
            case WmiCall::GetObject:
            case WmiCall::ExecMethod:
                return connector.ExecuteStaticMethod(L"Item", L"Do", {}, nullptr);
            default:
                return Query();
        }
    };
    for (const WmiCall call : {WmiCall::ExecQuery, WmiCall::Next, WmiCall::GetObject, WmiCall::ExecMethod,
                               WmiCall::PutInstance, WmiCall::ConnectServer}) {
        SCOPED_TRACE(static_cast<int>(call));
        connector.SetDeadline(20);
        repository.Hold(call);
        // On a busy machine a deadline may pass before its call has begun, which then leaves nothing behind.
        for (int tries = 0; tries < 100 && LeftBehindInMetrics() < 1; ++tries) {
            EXPECT_FALSE(run(call));
            EXPECT_EQ(connector.LastWmiErrorCode(), kTimedOut);
        }
        EXPECT_GE(LeftBehindInMetrics(), 1);
        EXPECT_TRUE(LetGo());
        connector.SetDeadline(0);
        EXPECT_TRUE(connector.Connect(kNamespace) && run(call));
    }
    repository.Hold(WmiCall::ExecQuery);
    EXPECT_EQ(WmiConnector::GetStringFromWmi("Item", "Name", kNamespace, 20), "");
    EXPECT_TRUE(LetGo());
    EXPECT_EQ(WmiConnector::GetStringFromWmi("Item", "Name", kNamespace, 30'000), "item0");
}

TEST_F(WmiLimitTest, AProviderThatNeverReturnsCostsAThreadAndNotItsCaller) {
    std::atomic<bool> mayAnswer{false};
    const auto live = [&mayAnswer](const std::vector<std::wstring>&) {
        for (int n = 0; n < 30'000 && !mayAnswer; ++n)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return std::vector<simulation::WmiValues>{};
    };
    repository.AddClass(kNamespace, {L"Item", {{L"Name", CIM_STRING, {}}}, {L"Name"}, {}, live});
    connector.SetDeadline(1);
    // A query whose time is over before its thread has begun leaves none behind.
    for (int n = 0; n < 10'000 && LeftBehindInMetrics() < WmiCaller::kMostLeftBehind; ++n) {
        EXPECT_FALSE(Query());
        EXPECT_EQ(connector.LastWmiErrorCode(), kTimedOut);
    }
    connector.SetDeadline(30'000);
    EXPECT_FALSE(Query());
    EXPECT_EQ(connector.LastWmiErrorCode(), kNoResources);
    mayAnswer = true;
    EXPECT_TRUE(LetGo());
    EXPECT_TRUE(Query());
}

// Each operation that enumerates, against providers of every kind; the other ones above.
TEST_F(WmiLimitTest, NoOperationOutlastsAProviderThatTricklesOrFloods) {
    std::atomic<int> stored{0};
    methods = {{L"Do", {}, {}, [&stored](const std::wstring&, const auto&, auto&) {
                    ++stored;
                    return S_OK;
                }}};
    const DataTable update(VariantList(Variant("Number", 1)));
    const std::pair<const char*, std::function<bool()>> operations[] = {
        {"query", [this] { return Query(); }},
        {"qualifiers",
         [this] { return connector.ExecuteQueryReturnQualifiers("SELECT * FROM Item", &table); }},
        {"visitor",
         [this] {
             return connector.ExecuteQuery("SELECT * FROM Item", [](const VariantList&) { return true; });
         }},
        {"update", [&] { return connector.ExecuteUpdateAll(L"SELECT * FROM Item", &update, &table); }},
        {"method",
         [&] { return connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Do", true, {}, &table); }},
    };
    for (const auto& [name, run] : operations) {
        SCOPED_TRACE(name);
        AddItems(1000);
        table.Clear(true);
        repository.Trickle(std::chrono::milliseconds(2));
        connector.SetDeadline(100);
        EXPECT_FALSE(run());
        EXPECT_EQ(connector.LastWmiErrorCode(), kTimedOut);
        EXPECT_LT(table.GetNumberOfRows(), 1000u);
        repository.Trickle(std::chrono::milliseconds(0));
        connector.SetDeadline(0);
        std::atomic<int> looks{0};
        {
            const Monitor monitor([&looks] { return ++looks > 50; });  // objects are ready without end
            EXPECT_FALSE(run());
        }
        EXPECT_EQ(connector.LastWmiErrorCode(), kShuttingDown);
        EXPECT_LT(table.GetNumberOfRows(), 1000u);
        repository.FailNext(WmiCall::Next, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED), 1);
        connector.SetDeadline(30'000);
        EXPECT_FALSE(run());
        EXPECT_EQ(connector.LastWmiErrorCode(), static_cast<std::int32_t>(WBEM_E_ACCESS_DENIED));
    }
}

TEST_F(WmiLimitTest, WithinTheLimitEverythingIsAsWithoutOne) {
    AddItems(250);
    connector.SetDeadline(60'000);
    EXPECT_TRUE(connector.Connect(kNamespace) && Query());
    EXPECT_EQ(table.GetNumberOfRows(), 250u);
    int outer = 0;
    EXPECT_TRUE(connector.ExecuteQuery("SELECT Name FROM Item", [&](const VariantList&) {
        EXPECT_TRUE(Query());  // an operation within another one
        return ++outer < 3;
    }));
    const auto live = [](const std::vector<std::wstring>&) -> std::vector<simulation::WmiValues> {
        throw std::runtime_error("provider");
    };
    repository.AddClass(kNamespace, {L"Item", {{L"Name", CIM_STRING, {}}}, {L"Name"}, {}, live});
    EXPECT_FALSE(Query());
    EXPECT_EQ(connector.LastWmiErrorCode(), static_cast<std::int32_t>(WBEM_E_PROVIDER_FAILURE));
    EXPECT_EQ(LeftBehindInMetrics(), 0);
}

}  // namespace quillon::test
