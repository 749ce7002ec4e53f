#include "quillon/EventLogReader.h"

#include <stdexcept>

#include "os/internal/EventLogTest.h"
#include "quillon/IApplicationDataStore.h"

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

}  // namespace quillon::test
