#include "quillon/SqlApplicationDataStore.h"

#include <gmock/gmock.h>

#include "quillon/ISqliteInstance.h"
#include "support/RecordingLogger.h"

namespace quillon::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Store = SqlApplicationDataStore;

/// Records what it is told; registered for its life. Statements succeed unless told otherwise.
class FakeEngine final : public ISqliteInstance, public ISqliteDatabase {
public:
    FakeEngine() { ServiceLocator::Put<ISqliteInstance>(this); }
    ~FakeEngine() override { ServiceLocator::Remove<ISqliteInstance>(); }

    ISqliteDatabase* OpenDatabase(std::int32_t, const std::string&) override {
        return opens ? this : nullptr;
    }
    void CloseDatabase(ISqliteDatabase*) override { calls.push_back("close"); }
    void BeginTransaction(std::int32_t) override { ADD_FAILURE(); }
    void CommitTransaction(std::int32_t) override { ADD_FAILURE(); }
    void RollbackTransaction(std::int32_t) override { ADD_FAILURE(); }
    void ShrinkMemory() override { ADD_FAILURE(); }
    void SetProperty(const std::string&, const std::string&) override { ADD_FAILURE(); }
    void GetProperty(const std::string&, std::string&) override { ADD_FAILURE(); }
    bool AddToTable(const char* table, const DataTable&, std::int32_t) override {
        calls.push_back(std::string("add ") + table);
        return true;
    }
    bool TableExists(const std::string&) override { return exists; }
    void DropTable(const std::string& table) override { calls.push_back("drop " + table); }
    std::string QuoteTableName(const std::string& database, const std::string& table, std::int32_t) override {
        return '<' + database + '.' + table + '>';
    }
    bool ExecuteQuery(const std::string& sql, DataTable&) override {
        calls.push_back(sql);
        return ++m_statements > failures.size() || !failures[m_statements - 1];
    }

    bool opens = true, exists = false;
    std::vector<bool> failures;  // of the statements from the first on
    std::vector<std::string> calls;

private:
    std::size_t m_statements = 0;
};

class SqlApplicationDataStoreTest : public testing::Test {
protected:
    FakeEngine m_engine;
    RecordingLogger m_log;
    const DataTable m_one{VariantList(Variant("A", 1))};
};

}  // namespace

TEST_F(SqlApplicationDataStoreTest, MakesTablesWithThePrescribedStatements) {
    Store store("Db");
    bool existed = false;
    store.EnsureTableExists("T", {{"Name", Store::Text}, {"Count", Store::Integer}}, {"Name", "Count"},
                            existed);
    store.EnsureTableExists("T", {{"B", Store::ColumnDataType(7)}, {"A", Store::Real}}, {}, existed);
    EXPECT_THAT(
        m_engine.calls,
        ElementsAre(
            "CREATE TABLE <Db.T> ([Count] INTEGER,[Name] TEXT, UNIQUE (Name,Count) ON CONFLICT REPLACE)",
            "CREATE TABLE <Db.T> ([A] REAL,[B] TEXT)"));
    m_engine.exists = true;
    store.EnsureTableExists("T", {{"A", Store::Real}}, {}, existed);
    EXPECT_TRUE(existed);
    EXPECT_EQ(m_engine.calls.size(), 2u);
}

TEST_F(SqlApplicationDataStoreTest, WarnsOfATableThatCannotBeMadeAndRefusesNamesBeforeAnySql) {
    Store store("Db");
    bool existed = true;
    m_engine.failures = {true};
    store.EnsureTableExists("T", {{"A", Store::Real}}, {}, existed);
    m_engine.calls.clear();
    for (const std::string& name : {std::string(), std::string("a]b"), std::string("a\0b", 3)}) {
        SCOPED_TRACE(testing::PrintToString(name));
        store.EnsureTableExists(name, {{"A", Store::Text}}, {}, existed);
        store.EnsureTableExists("T", {{"A", Store::Text}, {name, Store::Text}}, {}, existed);
        EXPECT_FALSE(store.WriteDataToTempTable(name, m_one));
        EXPECT_FALSE(store.WriteDataToTempTable("T", DataTable(VariantList(Variant(name, 1)))));
    }
    DataTable table = m_one;
    EXPECT_FALSE(store.AddToTable(std::string("a\0b", 3), table));
    EXPECT_TRUE(existed);
    EXPECT_THAT(m_engine.calls, IsEmpty());
    EXPECT_EQ(m_log.Lines(ICLogger::Level::Warn)[0], "Could not create table 'T' for Db storage");
    EXPECT_EQ(m_log.Lines(ICLogger::Level::Warn).size(), 7u);
}

TEST_F(SqlApplicationDataStoreTest, WritesTemporaryTablesAndKeepsTheBooks) {
    const std::string create = "CREATE TEMP TABLE [temp.T] ([A] INTEGER,[B] FLOAT,[C] TEXT,[D] NULL,[E] )";
    DataTable table;
    table.SetDefaultColumnNames({"A", "B", "C", "D", "E"});
    {
        Store store("Db");
        EXPECT_FALSE(store.WriteDataToTempTable("T", table));
        table.AddRow(
            VariantList(Variant("A", true), Variant("B", 0.5), Variant("C", "c"), Variant::NullVariant("D")));
        EXPECT_TRUE(store.WriteDataToTempTable("T", table));
        EXPECT_THAT(m_engine.calls, ElementsAre(create, "add temp.T"));
        m_engine.calls.clear();
        m_engine.exists = true;
        m_engine.failures = {false, true, false, true, true};
        EXPECT_TRUE(store.WriteDataToTempTable("T", table));
        EXPECT_FALSE(store.WriteDataToTempTable("T", table));
        EXPECT_THAT(m_engine.calls,
                    ElementsAre(create, "drop temp.T", create, "add temp.T", create, "drop temp.T", create));
        for (const char* name : {"Z", "Gone", "Y"})
            EXPECT_TRUE(store.WriteDataToTempTable(name, m_one)) << name;
        store.DeleteTempTable("Gone");
        store.DeleteTempTable("Never");
    }
    const std::string exists = "Temporary table temp.T already exists; dropping and re-creating";
    EXPECT_THAT(m_log.Lines(), ElementsAre("Opened Db database", exists, exists, "Closed Db database",
                                           "Db database leaked temporary table 'T'",
                                           "Db database leaked temporary table 'Z'",
                                           "Db database leaked temporary table 'Y'"));
}

TEST_F(SqlApplicationDataStoreTest, DoesNothingWithoutADatabase) {
    m_engine.opens = false;
    {
        Store store("Db");
        DataTable table = m_one;
        std::string value = "kept";
        bool existed = true;
        EXPECT_FALSE(store.AddToTable("T", table) || store.WriteDataToTempTable("T", table) ||
                     store.ExecuteQuery("SELECT 1", table) || store.ExecuteNonQuery("SELECT 1"));
        store.EnsureTableExists("T", {{"A", Store::Text}}, {}, existed);
        store.DeleteTempTable("T");
        store.BeginTransaction(), store.CommitTransaction(), store.RollbackTransaction();
        store.SetDatabaseProperty("P", "v"), store.GetDatabaseProperty("P", value), store.ShrinkMemory();
        EXPECT_EQ(store.QuoteTableName("T") + value, "Tkept");
    }
    EXPECT_THAT(m_engine.calls, IsEmpty());
    EXPECT_THAT(m_log.Lines(),
                ElementsAre("Local database services not available; Db storage will not be possible"));
}

}  // namespace quillon::test
