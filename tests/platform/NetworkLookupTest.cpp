#include "Utils/NetworkLookup.h"

#include <gmock/gmock.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/AddrInfo.h"
#include "platform/NetworkApi.h"
#include "platform/OwnFigures.h"
#include "quillon/NetworkUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"

namespace quillon {

namespace {

using Level = ICLogger::Level;
using testing::ElementsAre;
using Result = std::unique_ptr<addrinfo, void (*)(addrinfo*)>;

/// A resolver that answers nobody until it is opened; then it asks the system.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    bool isOpen = false;
    std::vector<platform::AddressQuery> asked;
};
Gate& TheGate() {
    static Gate& instance = *new Gate;
    return instance;
}

int AskBehindTheGate(const platform::AddressQuery& query, addrinfo*& list) {
    Gate& gate = TheGate();
    std::unique_lock lock(gate.mutex);
    gate.asked.push_back(query);
    gate.changed.notify_all();
    gate.changed.wait(lock, [&] { return gate.isOpen; });
    lock.unlock();
    return platform::AskSystem(query, list);
}

void Open() {
    const std::lock_guard lock(TheGate().mutex);
    TheGate().isOpen = true;
    TheGate().changed.notify_all();
}

void AwaitQuestions(std::size_t count) {
    std::unique_lock lock(TheGate().mutex);
    TheGate().changed.wait(lock, [&] { return TheGate().asked.size() >= count; });
}

int Ask(const std::string& node, Result& result, int seconds = 60, addrinfo* hints = nullptr) {
    return NetworkUtils::getaddrinfo_OrTimeout(node.c_str(), "80", hints, result, seconds);
}

Result Nothing() { return {nullptr, &NetworkUtils::FreeAddrInfoRobust}; }

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
    while (platform::LookupsUnderWay() != 0) std::this_thread::yield();
}

class NetworkLookup : public testing::Test {
protected:
    NetworkLookup() {
        EXPECT_TRUE(platform::StartSockets());
        TheGate().isOpen = false;
        TheGate().asked.clear();
        platform::SetResolver(&AskBehindTheGate);
    }
    ~NetworkLookup() override {
        AwaitTheEnd();
        platform::SetResolver(nullptr);
    }

    test::RecordingLogger m_log;
};

struct AtTheEnd {
    ~AtTheEnd() {
        AwaitTheEnd();
        std::fputs("ended", stdout);
    }
};

const test::ChildMode lookupAtEnd("lookup-at-end", [](const std::vector<std::string>&) {
    static const AtTheEnd atTheEnd;  // destroyed after what the library makes from here on
    platform::StartSockets();
    platform::SetResolver(&AskBehindTheGate);
    Result result = Nothing();
    return Ask("127.0.0.1", result, 1) == -1 ? 0 : 1;
});

}  // namespace

TEST_F(NetworkLookup, GivesUpAfterASecondAndTheRestEndsByItself) {
    static int freed;
    freed = 0;
    addrinfo old{};
    Result result(&old, [](addrinfo*) { ++freed; });
    EXPECT_EQ(Ask("127.0.0.1", result, -5), -1);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(freed, 1);
    EXPECT_THAT(m_log.Lines(Level::Warn),
                ElementsAre(" -> DNS resolution of 127.0.0.1 has timed out after 1 seconds"));
    EXPECT_EQ(platform::LookupsUnderWay(), 1);  // the sanitizers see whether its end is clean
}

TEST_F(NetworkLookup, GivesTheSystemsAnswer) {
    Open();
    Result result(nullptr, &::freeaddrinfo);
    EXPECT_EQ(Ask("127.0.0.1", result), 0);
    EXPECT_THAT(TextOf(result.get()), testing::StartsWith(" 127.0.0.1:80"));
    EXPECT_THAT(m_log.Lines(Level::Debug),
                ElementsAre(" -> DNS resolution of 127.0.0.1 has returned within 60 seconds"));
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST;
    EXPECT_EQ(Ask("no number", result, 60, &hints), EAI_NONAME);
    EXPECT_EQ(result, nullptr);
    EXPECT_NE(NetworkUtils::getaddrinfo_OrTimeout(nullptr, nullptr, nullptr, result, 60), 0);
}

TEST_F(NetworkLookup, IsSharedByThoseWhoAskTheSame) {
    std::vector<std::string> texts(8);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        threads.emplace_back([&text = texts[i], i] {
            addrinfo hints{};
            hints.ai_flags = AI_CANONNAME;
            Result result(nullptr, &::freeaddrinfo);
            Ask("127.0.0.1", result, 60, &hints);
            text = TextOf(result.get());
            if (i < 4) NetworkUtils::FreeAddrInfoRobust(result.release());
        });
    }
    Result late = Nothing();
    EXPECT_EQ(Ask("127.0.0.1", late, 1), -1);  // without hints: another question
    AwaitQuestions(2);
    Open();
    for (auto& thread : threads) thread.join();
    EXPECT_THAT(texts[0], testing::StartsWith("127.0.0.1 127.0.0.1:80 127.0.0.1:80"));
    EXPECT_THAT(texts, testing::Each(texts[0]));
}

TEST_F(NetworkLookup, NoMoreThanTheMostAreUnderWay) {
    std::vector<std::thread> threads;
    std::atomic<int> good{0};
    const auto ask = [&good](std::size_t i) {
        Result result = Nothing();
        good += Ask("127.0.0." + std::to_string(i), result) == 0;
    };
    for (std::size_t i = 1; i <= kMostLookups; ++i) threads.emplace_back(ask, i);
    AwaitQuestions(kMostLookups);
    Result result = Nothing();
    EXPECT_EQ(Ask("127.0.0.100", result, 1), -1);
    EXPECT_EQ(TheGate().asked.size(), kMostLookups);
    threads.emplace_back(ask, 100);  // waits for a place
    Open();
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(good, static_cast<int>(kMostLookups) + 1);
}

TEST(NetworkLookupAtExit, MayEndWhileTheProcessDoes) {
    const test::ChildOutput child = test::RunChild("lookup-at-end");
    EXPECT_TRUE(child.succeeded);
    EXPECT_EQ(child.out, "ended");
}

}  // namespace quillon
