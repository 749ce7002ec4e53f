#include <chrono>
#include <stdexcept>
#include <thread>

#include "examples/StoreTest.h"
#include "support/ChildMain.h"
#include "support/System.h"

namespace quillon::test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using StoreQueriesTest = StoreTest;

constexpr const char* kEndless =
    "WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c) SELECT count(*) FROM c";

}  // namespace

TEST_F(StoreQueriesTest, ParametersTakeAnyValueAndRowsAreHandedOut) {
    Store store("q");
    const std::string hostile = "'; DROP TABLE t; --";
    DataTable result;
    EXPECT_TRUE(store.ExecuteQuery(SqlQuery{"CREATE TABLE t (name TEXT, n)"}, result));
    for (const Variant& value : {V("n", 1), V("n", 0.5), V::NullVariant("n")})
        EXPECT_TRUE(store.ExecuteQuery(
            SqlQuery{"INSERT INTO t VALUES (?, ?)", VariantList(V("name", hostile), value)}, result));
    const SqlQuery named{"SELECT n FROM t WHERE name = :who AND n > @low",
                         VariantList(V("low", 0), V("who", hostile))};
    EXPECT_TRUE(store.ExecuteQuery(named, result));
    EXPECT_EQ(result, DataTable(VariantList(V("n", 1)), VariantList(V("n", 0.5))));
    EXPECT_TRUE(
        store.ExecuteQuery(SqlQuery{"SELECT n FROM t WHERE name = ?", VariantList(V("", "none"))}, result));
    EXPECT_THAT(result.GetColumnNames(), ElementsAre("n"));

    int visited = 0;
    EXPECT_TRUE(store.VisitRows(SqlQuery{"SELECT * FROM t"}, [&](VariantList&) { return ++visited < 2; }));
    EXPECT_TRUE(
        store.VisitRows(SqlQuery{"SELECT * FROM t", {}, 1}, [&](VariantList&) { return ++visited > 0; }));
    EXPECT_EQ(visited, 3);
    const auto fail = [](VariantList&) -> bool { throw std::runtime_error("visitor"); };
    EXPECT_THROW(store.VisitRows(SqlQuery{"SELECT * FROM t"}, fail), std::runtime_error);
    EXPECT_THAT(TakeErrors(), IsEmpty());
    EXPECT_FALSE(store.ExecuteQuery(SqlQuery{"SELECT ?", {}}, result));
    EXPECT_FALSE(store.ExecuteQuery(SqlQuery{"SELECT :a", VariantList(V("b", 1))}, result));
    EXPECT_FALSE(store.ExecuteQuery(SqlQuery{"SELECT length(zeroblob(268435457))"}, result));
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("needs 1 values and has 0"),
                                          HasSubstr("no value for parameter 1"), HasSubstr("too big")));
}

TEST_F(StoreQueriesTest, AChangeThatCannotBeCommittedFailsAlsoWhenNotAllItsRowsAreWanted) {
    Store store("returning");
    for (const char* sql : {"PRAGMA foreign_keys=ON", "CREATE TABLE p (n PRIMARY KEY)",
                            "CREATE TABLE c (n REFERENCES p DEFERRABLE INITIALLY DEFERRED)"})
        ASSERT_TRUE(store.ExecuteNonQuery(sql));
    DataTable result;
    EXPECT_FALSE(store.ExecuteQuery(SqlQuery{"INSERT INTO c VALUES (1) RETURNING n", {}, 1}, result));
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("FOREIGN KEY constraint failed (INSERT INTO c")));
    EXPECT_TRUE(store.ExecuteQuery(SqlQuery{"INSERT INTO p VALUES (1) RETURNING n", {}, 1}, result));
    EXPECT_EQ(Csv(store, "SELECT (SELECT count(*) FROM p) AS p, (SELECT count(*) FROM c) AS c"),
              "p,c\n1,0\n");
}

TEST_F(StoreQueriesTest, AStatementThatNeverEndsIsStopped) {
    Store store("endless"), other("endless");
    DataTable result;
    EXPECT_FALSE(store.ExecuteQuery(SqlQuery{kEndless, {}, 0, std::chrono::milliseconds(30)}, result));
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("interrupted, because its time is over")));
    std::string ending = kEndless;
    ending.insert(ending.rfind(") SELECT"), " LIMIT 9999");
    EXPECT_TRUE(store.ExecuteQuery(SqlQuery{ending, {}, 0, std::chrono::milliseconds::max()}, result));

    int looks = 0;
    const Monitor monitor([&looks] { return ++looks > 3; });
    EXPECT_FALSE(store.ExecuteNonQuery(kEndless));
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("interrupted, because the agent ends")));
    // What is short is still done, as modules keep their state when the agent ends.
    EXPECT_TRUE(store.ExecuteNonQuery("CREATE TABLE t (a)"));
    DataTable rows = Column("a", std::vector<Variant>(20'000, V(1)));
    EXPECT_TRUE(store.AddToTable("t", rows));
    store.BeginTransaction();
    EXPECT_FALSE(other.TryBegin() || store.TryBegin());
    EXPECT_TRUE(store.TryCommit());
    EXPECT_FALSE(store.TryCommit());
}

TEST_F(StoreQueriesTest, NothingIsChangedOutsideATransactionThatCouldNotBegin) {
    Store store("tx"), other("tx");
    DataTable row = Column("a", {V(1)});
    ASSERT_TRUE(store.ExecuteNonQuery("CREATE TABLE t (a)") && store.AddToTable("t", row));
    ASSERT_TRUE(other.TryBegin());
    store.BeginTransaction();
    ASSERT_TRUE(other.TryCommit());
    EXPECT_FALSE(store.ExecuteNonQuery("DELETE FROM t") || store.AddToTable("t", row) ||
                 store.WriteDataToTempTable("t", row) || store.VisitRows(SqlQuery{"DELETE FROM t"}, nullptr));
    EXPECT_EQ(Csv(store, "SELECT a FROM t"), "a\n1\n");
    store.RollbackTransaction();
    EXPECT_TRUE(store.AddToTable("t", row));
    ASSERT_TRUE(other.TryBegin());
    store.BeginTransaction();
    ASSERT_TRUE(other.TryCommit());
    EXPECT_TRUE(store.ExecuteNonQuery("/* a */ -- b\n begin IMMEDIATE") &&
                store.ExecuteNonQuery("DELETE FROM t") && store.TryCommit());
    EXPECT_EQ(Csv(store, "SELECT a FROM t"), "a\n");
}

TEST_F(StoreQueriesTest, NothingIsKeptOfATransactionThatAFailureHasUndone) {
    Store store("tx");
    DataTable row = Column("a", {V(1)}), large = Column("a", {V(std::string(200'000, 'x'))});
    ASSERT_TRUE(store.ExecuteNonQuery("CREATE TABLE t (a)") &&
                store.ExecuteNonQuery("CREATE TABLE u (a UNIQUE)") && store.AddToTable("u", row) &&
                store.ExecuteNonQuery("PRAGMA max_page_count=8"));
    std::vector<std::function<bool()>> undoing = {
        [&] { return store.ExecuteNonQuery("INSERT OR ROLLBACK INTO u VALUES (1)"); },
        [&] { return store.VisitRows(SqlQuery{"INSERT OR ROLLBACK INTO u VALUES (1)"}, nullptr); },
        [&] { return store.AddToTable("t", large); },
        [&] {
            std::filesystem::rename(dir.Native("stores/db-tx.sqlite"), dir.Native("moved"));
            return store.AddToTable("t", row);
        },
    };
    if (kWindows) undoing.pop_back();  // nobody can move the file of an open database there
    for (const auto& fails : undoing) {
        store.BeginTransaction();
        EXPECT_TRUE(store.AddToTable("t", row));
        EXPECT_FALSE(fails());
        EXPECT_FALSE(store.ExecuteNonQuery("CREATE TABLE v (a)") || store.AddToTable("u", row));
        store.CommitTransaction();
        EXPECT_EQ(Csv(store, "SELECT count(*) n FROM sqlite_master WHERE name = 'v'"), "n\n0\n");
        store.ExecuteNonQuery("CREATE TABLE IF NOT EXISTS t (a)");
        EXPECT_EQ(Csv(store, "SELECT count(*) n FROM t"), "n\n0\n");
    }
}

TEST_F(StoreQueriesTest, MissingColumnsAreAddedAllOrNone) {
    Store store("migrate");
    store.ExecuteNonQuery("CREATE TABLE t (A)");
    store.ExecuteNonQuery("INSERT INTO t VALUES (1)");
    EXPECT_TRUE(store.EnsureColumns("t", {{"a", Store::Text}, {"B c", Store::Integer}, {"d", Store::Real}}));
    EXPECT_EQ(Csv(store, "SELECT * FROM t"), "A,B c,d\n1,,\n");
    EXPECT_FALSE(store.EnsureColumns("t", {{"e", Store::Text}, {"f]", Store::Text}}));
    EXPECT_FALSE(store.EnsureColumns("none", {{"a", Store::Text}}));
    EXPECT_EQ(Csv(store, "SELECT * FROM t"), "A,B c,d\n1,,\n");
}

TEST_F(StoreQueriesTest, ATableThatAnotherThreadMakesIsThereWithoutAWarning) {
    constexpr int kRounds = 50 / QUILLON_TEST_SLOWDOWN + 1;
    m_databases.engine.emplace(m_databases.folder);  // which waits as the agent does
    const auto ensure = [](int round) {
        Store store("race");
        bool existed = false;
        for (int attempt = 0; attempt < 5 && !existed; ++attempt)
            store.EnsureTableExists("t" + std::to_string(round), {{"a", Store::Text}}, {}, existed);
    };
    for (int round = 0; round < kRounds; ++round) {
        std::thread other([&] { ensure(round); });
        ensure(round);
        other.join();
    }
    for (const std::string& line : m_log.Lines(ICLogger::Level::Warn)) EXPECT_EQ(line, "");
    EXPECT_EQ(Query(*std::make_unique<Store>("race"), "SELECT name FROM sqlite_master").GetNumberOfRows(),
              static_cast<std::size_t>(kRounds));
}

TEST_F(StoreQueriesTest, NamesOfTemporaryTablesDifferByMoreThanTheirCase) {
    {
        Store store("temp");
        EXPECT_TRUE(store.WriteDataToTempTable("t", Column("a", {V(1)})));
        EXPECT_TRUE(store.WriteDataToTempTable("T", Column("a", {V(2)})));
        EXPECT_EQ(Csv(store, "SELECT a FROM [temp.t]"), "a\n2\n");
        store.DeleteTempTable("T");
    }
    EXPECT_THAT(m_log.Lines(ICLogger::Level::Warn), IsEmpty());
}

TEST_F(StoreQueriesTest, ChecksFindTheDamage) {
    std::vector<std::string> faults;
    {
        Store store("check");
        store.ExecuteNonQuery("CREATE TABLE t (a)");
        store.ExecuteNonQuery("CREATE INDEX i ON t (a)");
        store.ExecuteNonQuery("INSERT INTO t VALUES ('needle')");
        EXPECT_TRUE(store.Check(faults));
    }
    std::string content = dir.Read("stores/db-check.sqlite");
    content.replace(content.find("needle"), 6, "noodle");  // in the table or its index, but not in both
    dir.Write("stores/db-check.sqlite", content);
    EXPECT_FALSE(Store("check").Check(faults));
    EXPECT_THAT(faults, testing::Not(IsEmpty()));
}

}  // namespace quillon::test
