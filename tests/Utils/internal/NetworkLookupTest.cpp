#include "Utils/internal/NetworkLookup.h"

#include <gmock/gmock.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "base/OwnFigures.h"
#include "platform/AddrInfo.h"
#include "platform/NetworkApi.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/NetworkUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/Threads.h"

namespace quillon {

namespace {

using Level = ICLogger::Level;
constexpr int kMost = static_cast<int>(LookupLimits{}.awaited);
using Result = std::unique_ptr<addrinfo, void (*)(addrinfo*)>;

/// A gate, which is never destroyed. A std::atomic would miss an opening now and then: without a futex, as on
/// Windows, libstdc++ 12 looks at its value before it takes the lock under which it waits.
class Gate {
public:
    void Set(bool isOpen) {
        {
            const std::lock_guard lock(m_mutex);
            m_isOpen = isOpen;
        }
        m_changed.notify_all();
    }
    void Pass() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isOpen; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOpen = false;
};

Gate& TheGate() {
    static Gate& gate = *new Gate;
    return gate;
}

std::atomic<int> g_asked{0};

/// Answers nobody until the gate is opened; then it asks the system, and for what depends on the machine's
/// resolver it asks for 127.0.0.1.
int AskBehindTheGate(const platform::AddressQuery& query, addrinfo*& list) {
    ++g_asked;
    TheGate().Pass();
    platform::AddressQuery known = query;
    const std::string node = known.node.value_or("");
    if (node.starts_with("host") || node == "localhost" || node == "::1") known.node = "127.0.0.1";
    return platform::AskSystem(known, list);
}

void Open() { TheGate().Set(true); }

void AwaitQuestions(int count) {
    while (g_asked < count) std::this_thread::yield();
}

int Ask(const std::string& node, Result& result, int seconds = 60, addrinfo* hints = nullptr) {
    return NetworkUtils::getaddrinfo_OrTimeout(node.c_str(), "80", hints, result, seconds);
}

/// Every address, its canonical name in front.
std::string TextOf(const addrinfo* list) {
    std::string text;
    for (; list != nullptr; list = list->ai_next) {
        if (list->ai_canonname != nullptr) text += list->ai_canonname;
        text += ' ' + platform::AddressToText(list->ai_addr, list->ai_addrlen);
    }
    return text;
}

/// No look-up reaches into the next test.
void AwaitTheEnd() {
    Open();
    while (base::LookupsUnderWay() != 0) std::this_thread::yield();
}

class NetworkLookup : public testing::Test {
protected:
    NetworkLookup() {
        EXPECT_TRUE(platform::StartSockets());
        TheGate().Set(false);
        g_asked = 0;
        platform::SetResolver(&AskBehindTheGate);
    }
    ~NetworkLookup() override {
        AwaitTheEnd();
        platform::SetResolver(nullptr);
    }

    test::RecordingLogger m_log;
};

const test::ChildMode lookupAtEnd("lookup-at-end", [](const std::vector<std::string>&) {
    static const DestructorFunctor last([] {  // after all that the library makes from here on
        AwaitTheEnd();
        std::fputs("ended", stdout);
    });
    platform::StartSockets();
    platform::SetResolver(&AskBehindTheGate);
    Result result(nullptr, &::freeaddrinfo);
    return Ask("127.0.0.1", result, 1) == -1 ? 0 : 1;
});

}  // namespace

TEST_F(NetworkLookup, GivesUpAfterASecondAndTheRestEndsByItself) {
    static int freed;
    freed = 0;
    addrinfo old{};
    Result result(&old, [](addrinfo*) { ++freed; });
    EXPECT_EQ(Ask("127.0.0.1", result, -5), -1);
    EXPECT_TRUE(result == nullptr && freed == 1);
    EXPECT_THAT(m_log.Lines(Level::Warn),
                testing::ElementsAre(" -> DNS resolution of 127.0.0.1 has timed out after 1 seconds"));
    AwaitQuestions(1);
    EXPECT_EQ(Ask("127.0.0.1", result, 1), -1);
    EXPECT_EQ(g_asked, 1);
    EXPECT_EQ(base::LookupsUnderWay(), 1);  // the sanitizers see whether its end is clean
}

TEST_F(NetworkLookup, GivesEveryAskerItsOwnAnswer) {
    std::vector<std::string> texts(8);
    test::Threads threads(8, [&texts](int i) {
        addrinfo hints{};
        hints.ai_flags = AI_CANONNAME;
        Result result(nullptr, &::freeaddrinfo);
        Ask("127.0.0.1", result, 60, &hints);
        texts[static_cast<std::size_t>(i)] = TextOf(result.get());
        if (i < 4) NetworkUtils::FreeAddrInfoRobust(result.release());
    });
    Result late(nullptr, &::freeaddrinfo);
    EXPECT_EQ(Ask("127.0.0.1", late, 1), -1);  // without hints: another question
    AwaitQuestions(2);
    Open();
    threads.Join();
    EXPECT_THAT(texts[0], testing::StartsWith("127.0.0.1 127.0.0.1:80 127.0.0.1:80"));
    EXPECT_THAT(texts, testing::Each(texts[0]));
    EXPECT_THAT(m_log.Lines(Level::Debug),
                testing::Each(" -> DNS resolution of 127.0.0.1 has returned within 60 seconds"));
    addrinfo numeric{};
    numeric.ai_flags = AI_NUMERICHOST;
    EXPECT_EQ(Ask("no number", late, 60, &numeric), EAI_NONAME);
    const int code = NetworkUtils::getaddrinfo_OrTimeout(nullptr, nullptr, nullptr, late, 60);
    EXPECT_NE(code, 0);
    EXPECT_GT(NetworkUtils::LookupErrorText(code).size(), std::string("code -12345").size());
    EXPECT_EQ(NetworkUtils::LookupErrorText(-1), "the look-up has timed out");
}

TEST_F(NetworkLookup, NoMoreThanTheMostAreUnderWay) {
    std::vector<std::thread> threads;
    std::atomic<int> good{0};
    const auto ask = [&good](int i) {
        Result result(nullptr, &::freeaddrinfo);
        good += Ask("host" + std::to_string(i), result) == 0;
    };
    for (int i = 1; i <= kMost; ++i) threads.emplace_back(ask, i);
    AwaitQuestions(kMost);
    Result result(nullptr, &::freeaddrinfo);
    EXPECT_EQ(Ask("host100", result, 1), -1);
    EXPECT_EQ(g_asked, kMost);
    EXPECT_THAT(m_log.Lines(Level::Warn),
                testing::ElementsAre(" -> DNS resolution of host100 has not started within 1 seconds: too "
                                     "many are under way"));
    threads.emplace_back(ask, 100);                                   // waits for a place
    for (const char* const node : {"127.0.0.1", "localhost", "::1"})  // no server is asked
        threads.emplace_back([&, node] {
            Result own(nullptr, &::freeaddrinfo);
            good += Ask(node, own) == 0;
        });
    AwaitQuestions(kMost + 3);
    Open();
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(good, kMost + 4);
}

TEST_F(NetworkLookup, OnesThatNobodyWaitsForLeaveTheirPlace) {
    const DestructorFunctor restore([] { SetLookupLimits({}); });
    NetworkUtils::SetLookupLimits(1, 2);
    Result result(nullptr, &::freeaddrinfo);
    EXPECT_EQ(Ask("host1", result, 1), -1);
    EXPECT_EQ(Ask("host2", result, 1), -1);
    EXPECT_EQ(g_asked, 2);
    EXPECT_EQ(Ask("host3", result, 1), -1);
    EXPECT_EQ(g_asked, 2) << "two were given up, and no more may be under way";
    Open();
    EXPECT_EQ(Ask("host3", result), 0);
}

TEST(NetworkLookupAtExit, MayEndWhileTheProcessDoes) {
    const test::ChildOutput child = test::RunChild("lookup-at-end");
    EXPECT_TRUE(child.succeeded);
    EXPECT_EQ(child.out, "ended");
}

}  // namespace quillon
