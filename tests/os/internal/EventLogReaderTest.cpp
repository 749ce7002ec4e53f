#include "quillon/EventLogReader.h"

#include <stdexcept>

#include "os/internal/EventLogTest.h"
#include "quillon/DataTableIO.h"
#include "quillon/EventSubscription.h"
#include "quillon/IApplicationDataStore.h"
#include "support/ChildMain.h"

namespace quillon::test {

namespace {

using Start = EventLogReader::Start;
using testing::ElementsAre;
using testing::IsEmpty;

/// Keeps properties only.
class PropertyStore final : public IApplicationDataStore {
public:
    bool AddToTable(const std::string&, DataTable&) override { return false; }
    bool WriteDataToTempTable(const std::string&, const DataTable&) override { return false; }
    void DeleteTempTable(const std::string&) override {}
    bool ExecuteQuery(const std::string&, DataTable&) override { return false; }
    bool ExecuteNonQuery(const std::string&) override { return false; }
    void EnsureTableExists(const std::string&, const std::map<std::string, ColumnDataType>&,
                           const std::vector<std::string>&, bool&) override {}
    std::string QuoteTableName(const std::string& name) override { return name; }
    std::string AddTempTablePrefix(const std::string& name) override { return name; }
    void BeginTransaction() const override {}
    void CommitTransaction() const override {}
    void RollbackTransaction() const override {}
    void SetDatabaseProperty(const std::string& name, const std::string& value) override {
        m_values[name] = value;
    }
    void GetDatabaseProperty(const std::string& name, std::string& value) override {
        if (m_values.contains(name)) value = m_values[name];
    }
    void ShrinkMemory() override {}

private:
    std::map<std::string, std::string> m_values;
};

class EventLogReaderTest : public EventLogTest {
protected:
    EventLogReaderTest() { events.AddChannel("C", true, 5); }

    void Write(int count) {
        for (int n = 0; n < count; ++n)
            EventLogTest::Write("C", std::string(5'000, 'm'));  // longer than a buffer
    }
    /// As after a restart: only the store stays.
    std::vector<std::uint64_t> Read(Start expected, std::uint64_t stopAt = 0) {
        std::vector<std::uint64_t> numbers;
        const auto result = EventLogReader("c", store).ReadNew([&](const LogEvent& event) {
            numbers.push_back(event.recordId);
            return event.recordId != stopAt;
        });
        EXPECT_EQ(result.errorCode, 0u);
        EXPECT_EQ(result.start, expected);
        EXPECT_EQ(result.visited, numbers.size());
        return numbers;
    }

    std::vector<std::string> Messages(const EventLogSource& source, Start expected,
                                      std::uint64_t unreadable) {
        std::vector<std::string> messages;
        const auto result = EventLogReader(source, store).ReadNew([&](const LogEvent& event) {
            messages.push_back(event.message);
            return true;
        });
        EXPECT_EQ(result.errorCode, 0u);
        EXPECT_EQ(result.start, expected);
        EXPECT_EQ(result.unreadable, unreadable);
        return messages;
    }
    static EventLogSource WithMessage(const std::string& query = "*") {
        EventLogSource source{"C", query};
        source.withMessage = true;
        return source;
    }

    PropertyStore store;
};

}  // namespace

TEST_F(EventLogReaderTest, GoesOnWhereItEnded) {
    EXPECT_THAT(Read(Start::Oldest), IsEmpty());
    Write(3);
    EXPECT_THAT(Read(Start::Oldest, 2), ElementsAre(1, 2));
    EXPECT_THAT(Read(Start::Bookmark), ElementsAre(3));
    EXPECT_THAT(Read(Start::Bookmark), IsEmpty());
    Write(4);
    EXPECT_THAT(Read(Start::Bookmark), ElementsAre(4, 5, 6, 7));
}

TEST_F(EventLogReaderTest, TellsOfAGapAndBeginsWithTheOldest) {
    Write(2);
    Read(Start::Oldest);
    Write(6);  // the log holds 5
    EXPECT_THAT(Read(Start::Gap), ElementsAre(4, 5, 6, 7, 8));
    events.Clear("C", false);
    Write(1);
    EXPECT_THAT(Read(Start::Gap), ElementsAre(9));
    events.Clear("C", true);
    EXPECT_THAT(Read(Start::Gap), IsEmpty());
    Write(3);
    EXPECT_THAT(Read(Start::Oldest), ElementsAre(1, 2, 3));
    events.Clear("C", true);
    Write(4);  // another event has the bookmark's number
    EXPECT_THAT(Read(Start::Gap), ElementsAre(1, 2, 3, 4));
}

TEST_F(EventLogReaderTest, KeepsWhatWasVisitedWhenItFails) {
    Write(3);
    const EventLogReader reader("C", store);
    EXPECT_THROW(reader.ReadNew([](const LogEvent& event) {
        return event.recordId == 2 ? throw std::runtime_error("no") : true;
    }),
                 std::runtime_error);
    events.FailNext("EvtQuery", 5);
    EXPECT_EQ(reader.ReadNew([](const LogEvent&) { return true; }).errorCode, 5u);
    events.FailNext("EvtRender", 8);
    EXPECT_EQ(reader.ReadNew([](const LogEvent&) { return true; }).errorCode, 8u);
    EXPECT_THAT(Read(Start::Bookmark), ElementsAre(2, 3));
}

TEST_F(EventLogReaderTest, QueriesNewestFirst) {
    Write(4);
    std::vector<std::uint64_t> numbers;
    const auto take = [&](const LogEvent& event) {
        EXPECT_EQ(event.provider + ' ' + event.channel, "Provider C");
        EXPECT_EQ(event.eventId, 7u);
        EXPECT_EQ(event.level, 4u);
        numbers.push_back(event.recordId);
        return numbers.size() < 2;
    };
    EXPECT_EQ(EventLogReader::Query("c", "*[System[(EventRecordID<=3)]]", take).visited, 2u);
    EXPECT_THAT(numbers, ElementsAre(3, 2));
    EXPECT_EQ(EventLogReader::Query("missing", "*", take).errorCode, 15007u);
    EXPECT_EQ(EventLogReader::Query("C", "*[", take).errorCode, 15001u);
}

TEST_F(EventLogReaderTest, ReadsACollectorsLogOnceWhateverTheNumbersOfTheSenders) {
    for (const std::uint64_t number : {900U, 3U, 900U, 17U, 1U}) {
        simulation::Event event{"Provider", 7, 4, std::to_string(number), number, 0, {}};
        events.Forward("C", event);
    }
    EXPECT_THAT(Messages(WithMessage(), Start::Oldest, 0), ElementsAre("900", "3", "900", "17", "1"));
    EXPECT_THAT(Messages(WithMessage(), Start::Bookmark, 0), IsEmpty());
    events.Forward("C", {"Provider", 7, 4, "next", 2, 0, {}});
    EXPECT_THAT(Messages(WithMessage(), Start::Bookmark, 0), ElementsAre("next"));
}

TEST_F(EventLogReaderTest, LeavesOutAndCountsWhatCannotBeRendered) {
    for (const char* const message : {"a", "broken", "b", "broken"}) EventLogTest::Write("C", message);
    events.MakeUnreadable("broken", 15003);
    EXPECT_THAT(Messages(WithMessage(), Start::Oldest, 2), ElementsAre("a", "b"));
    EventLogTest::Write("C", "c");
    EXPECT_THAT(Messages(WithMessage(), Start::Bookmark, 0), ElementsAre("c"));
    std::uint64_t unreadable =
        EventLogReader::Query(WithMessage(), [](const LogEvent&) { return true; }).unreadable;
    EXPECT_EQ(unreadable, 2u);
    events.MakeUnreadable("c", 1722);  // no service: not the event's fault
    EventLogTest::Write("C", "d");
    EXPECT_EQ(EventLogReader("C", store).ReadNew([](const LogEvent&) { return true; }).errorCode, 1722u);
}

TEST_F(EventLogReaderTest, BeginsNowAndKeepsAPlaceForEachQuery) {
    EventLogSource source = WithMessage(), seven = WithMessage("*[System[(EventRecordID>=3)]]");
    source.fromNow = true;
    EXPECT_THAT(Messages(source, Start::Now, 0), IsEmpty());  // while the channel is empty
    EventLogTest::Write("C", "1");
    EXPECT_THAT(Messages(source, Start::Bookmark, 0), ElementsAre("1"));
    EventLogTest::Write("C", "2");
    EventLogTest::Write("C", "3");
    EXPECT_THAT(Messages(seven, Start::Oldest, 0), ElementsAre("3"));
    EXPECT_THAT(Messages(source, Start::Bookmark, 0), ElementsAre("2", "3"));
    store.SetDatabaseProperty("EventLogBookmark.C", "");
    EXPECT_THAT(Messages(source, Start::Now, 0), IsEmpty());
    EventLogTest::Write("C", "4");
    EXPECT_THAT(Messages(source, Start::Bookmark, 0), ElementsAre("4"));
    EXPECT_THAT(Messages(seven, Start::Bookmark, 0), ElementsAre("4"));
}

TEST_F(EventLogReaderTest, GoesOnFromThePlaceOfAnOlderVersionAndReadsEveryField) {
    Write(2);
    LogEvent first;
    EventLogReader::Query("C", "*[System[(EventRecordID=1)]]", [&](const LogEvent& event) {
        first = event;
        return true;
    });
    store.SetDatabaseProperty("EventLogBookmark.C",
                              "1 " + std::to_string(first.time.time_since_epoch().count()));
    EXPECT_THAT(Read(Start::Bookmark), ElementsAre(2));
    EXPECT_THAT(ToCsv(DataTable(EventLogReader::ToRow(first))),
                testing::HasSubstr(",localhost,3,1,0x8000000000000000,4711,815,S-1-5-18,"));
}

// What stands in a real file only the system can read, and the emulator cannot.
TEST_F(EventLogReaderTest, ASavedLogIsReadByItsPath) {
    EventLogSource saved{"C:\\logs\\saved.evtx", "*"};
    saved.withMessage = true;
    const auto failure = [this](const EventLogSource& source) {
        return EventLogReader(source, store).ReadNew([](const LogEvent&) { return true; }).errorCode;
    };
    saved.isFile = true;
    EXPECT_EQ(failure(saved), 2u);
    events.AddChannel(saved.name, true, 5);
    EventLogTest::Write(saved.name, "a");
    EventLogTest::Write(saved.name, "b");
    EXPECT_THAT(Messages(saved, Start::Oldest, 0), ElementsAre("a", "b"));
    EXPECT_THAT(Messages(saved, Start::Bookmark, 0), IsEmpty());
    saved.isFile = false;
    EXPECT_EQ(failure(saved), 15007u);
}

TEST_F(EventLogReaderTest, AFailureWithoutAReasonIsOne) {
    Write(1);
    for (const char* const entry : {"EvtQuery", "EvtNext"}) {
        events.FailNext(entry, simulation::EventLog::kWithoutReason);
        EXPECT_NE(EventLogReader::Query("C", "*", [](const LogEvent&) { return true; }).errorCode, 0u);
    }
}

TEST_F(EventLogReaderTest, ASubscriptionKeepsFewOfManyProviders) {
    constexpr int kProviders = 500;
    events.AddChannel("many", true);
    EventSubscription subscription;
    EventLogSource source = WithMessage();
    source.name = "many";
    ASSERT_TRUE(subscription.Open(source));
    for (int n = 0; n < kProviders; ++n)
        events.Write("many", {"P" + std::to_string(n), 7, 4, "a %1 and %%n", 0, 0, {}});
    LogEvent event;
    for (int n = 0; n < kProviders; ++n) {
        ASSERT_EQ(subscription.Take(event, std::chrono::seconds(10)), EventSubscription::Outcome::Event);
        ASSERT_EQ(event.message, "a %1 and %%n") << "although the event has no value for the insert";
    }
    EXPECT_EQ(event.provider, "P499");
    EXPECT_LT(events.CountHandles(), 100u);

    int looks = 0;
    const Monitor monitor([&looks] { return ++looks > 2; });
    EXPECT_EQ(subscription.Take(event, std::chrono::milliseconds::max()),
              EventSubscription::Outcome::Shutdown);
}

TEST_F(EventLogReaderTest, SubscriptionsArePulledFromABookmarkOn) {
    using Outcome = EventSubscription::Outcome;
    constexpr std::chrono::milliseconds kNoWait(0);
    EventLogTest::Write("C", "old");
    std::string bookmark;
    LogEvent event;
    EventLogSource source = WithMessage();
    source.fromNow = true;
    {
        EventSubscription subscription;
        EXPECT_EQ(subscription.Take(event, kNoWait), Outcome::Failed);
        ASSERT_TRUE(subscription.Open(source));
        EXPECT_EQ(subscription.Take(event, kNoWait), Outcome::Timeout);
        for (const char* const message : {"1", "broken", "2"}) EventLogTest::Write("C", message);
        events.MakeUnreadable("broken", 15003);
        EXPECT_EQ(subscription.Take(event, kNoWait), Outcome::Event);
        EXPECT_EQ(event.message, "1");
        bookmark = subscription.Bookmark();
    }
    EventSubscription subscription;
    ASSERT_TRUE(subscription.Open(source, bookmark));
    EXPECT_EQ(subscription.Take(event, kNoWait), Outcome::Event);
    EXPECT_EQ(event.message + std::to_string(subscription.Unreadable()), "21");
    events.Clear("C", true);
    ASSERT_TRUE(subscription.Open(source, bookmark));
    EXPECT_TRUE(subscription.HasGap());
    EXPECT_FALSE(subscription.Open({"missing"}));
    EXPECT_EQ(subscription.ErrorCode(), 15007u);
}

}  // namespace quillon::test
