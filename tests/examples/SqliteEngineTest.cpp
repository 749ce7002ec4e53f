#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <limits>

#include "examples/StoreTest.h"
#include "support/ChildMain.h"

namespace quillon::test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// commit FOLDER: commits 1, 2, 3 ... and prints each once it is committed.
const ChildMode commit("commit", [](const std::vector<std::string>& a) {
    RecordingLogger log;
    Databases databases(a[0]);
    Store store("loop");
    store.ExecuteNonQuery("CREATE TABLE t (n INTEGER)");
    for (long long n = 1;; ++n) {
        DataTable row(VariantList(V("n", n)));
        if (!store.AddToTable("t", row)) return 1;
        if (std::printf("%lld\n", n) < 0 || std::fflush(stdout) != 0) return 2;
    }
});

}  // namespace

TEST_F(StoreTest, TakesEveryNameThatCanStandInBrackets) {
    Store store("names");
    const std::string names[] = {
        "[",      "a[b\"c'd`", "x; DROP TABLE y; --", "line\nend", "select",
        "temp.t", "a.b",       "\xC3\xA9 %s%n",       "?1",        std::string(128 * 1024, 'n')};
    for (const std::string& name : names) {
        SCOPED_TRACE(name.substr(0, 30));
        DataTable table = Column(name, {V("v"), V("w")});
        ASSERT_TRUE(store.WriteDataToTempTable(name, table));
        EXPECT_EQ(Query(store, "SELECT * FROM [temp." + name + ']'), table);
        bool existed = false;
        store.EnsureTableExists(name, {{name, Store::Text}}, {}, existed);
        EXPECT_FALSE(existed);
        ASSERT_TRUE(store.AddToTable(name, table));
        EXPECT_EQ(Query(store, "SELECT * FROM " + store.QuoteTableName(name)), table);
        store.EnsureTableExists(name, {{name, Store::Text}}, {}, existed);
        EXPECT_TRUE(existed);
        store.DeleteTempTable(name);
        EXPECT_FALSE(store.ExecuteNonQuery("SELECT * FROM [temp." + name + ']'));
    }
}

TEST_F(StoreTest, RefusesWhatSqliteCannotHold) {
    Store store("limits");
    VariantList row;
    for (int i = 0; i < 2000; ++i) row.Add("c" + std::to_string(i), i);
    EXPECT_TRUE(store.WriteDataToTempTable("wide", DataTable(row)));
    row.Add("last", 1);
    EXPECT_FALSE(store.WriteDataToTempTable("wider", DataTable(row)));
    EXPECT_FALSE(store.WriteDataToTempTable("case", DataTable(VariantList(V("a", 1), V("A", 2)))));
    for (const std::string& sql :
         {std::string("SELECT 1; SELECT 2"), std::string(" -- nothing"), std::string("SELECT 1\0", 9),
          std::string("ATTACH 'other' AS other"), std::string("VACUUM INTO 'other'"),
          std::string("PRAGMA main.Hard_Heap_Limit(1000000000)"),
          std::string("PRAGMA temp_store_directory = ''")})
        EXPECT_FALSE(store.ExecuteNonQuery(sql)) << sql;
    EXPECT_TRUE(store.ExecuteNonQuery("SELECT 1; -- and no more\n ;;") && store.ExecuteNonQuery("VACUUM"));
    m_log.Forget();
    EXPECT_FALSE(store.ExecuteNonQuery("broken " + std::string(9999, 'x')));
    EXPECT_THAT(TakeErrors(),
                ElementsAre(testing::AllOf(
                    testing::StartsWith("Database 'limits': near \"broken\": syntax error (broken xxx"),
                    HasSubstr("x...)"), testing::SizeIs(testing::Lt(600u)))));
}

TEST_F(StoreTest, ReadsBackWhatWasWrittenWhateverTheColumnPrefers) {
    const long long max = std::numeric_limits<long long>::max(), min = std::numeric_limits<long long>::min();
    const double infinity = std::numeric_limits<double>::infinity();
    const V nan(std::nan("")), null;
    const V zero(std::string("a\0b", 3)), time(TimePoint(std::chrono::seconds(1)));
    const struct {
        std::vector<Variant> written, read;  // nothing: the same
    } cases[] = {
        {{V(max), V(min), null}, {}},
        {{V(0.1), V(infinity), V(-infinity), V(5e-324), V(1e308)}, {}},
        {{V(1.5), nan}, {V(1.5), null}},
        {{zero, V(""), V("\xFF"), null, V("1"), V("1.0")}, {}},
        {{V(1), V("007"), V("1e3"), V(" 1"), V("9223372036854775808"), V("-0"), V("1 a"), V("-"), V("1.50"),
          V("0.1234567890123456789")},
         {}},
        {{null, V("12"), V(max), V(2.0)}, {}},
        {{V(1), V("12"), V("-568841.833713")}, {V(1), V(12), V(-568841.833713)}},
        {{V("x"), V(max), V(0.1), V(true)}, {V("x"), V("9223372036854775807"), V("0.1"), V("1")}},
        {{V(0.5), V(max), V(9007199254740993LL), V("12")},
         {V(0.5), V("9223372036854775807"), V("9007199254740993"), V(12.0)}},
        {{V(true), V(0.5), V(false), V("x")}, {V(1), V(0.5), V(0), V("x")}},
        {{time, time}, {V("1970-01-01T00:00:01.000Z"), V("1970-01-01T00:00:01.000Z")}},
    };
    Store store("values");
    for (const auto& c : cases) {
        SCOPED_TRACE(ToCsv(Column("c-d", c.written)));
        ASSERT_TRUE(store.WriteDataToTempTable("t", Column("c-d", c.written)));
        EXPECT_EQ(Query(store, "SELECT * FROM [temp.t]"), Column("c-d", c.read.empty() ? c.written : c.read));
    }
    EXPECT_THAT(TakeErrors(), testing::IsEmpty());  // a table written twice is none
    EXPECT_EQ(Csv(store, "SELECT 1 AS a, 2 AS b WHERE 0"), "a,b\n");
}

TEST_F(StoreTest, ReadsTextsOfADatabaseInUtf16) {
    Store store("wide");
    const DataTable table =
        Column("a", {V("\xC3\xA9\xF0\x9F\x98\x80"), V(""), V(std::string("a\0b", 3)), V(1)});
    ASSERT_TRUE(store.ExecuteNonQuery("PRAGMA encoding='UTF-16'") &&
                store.ExecuteNonQuery("CREATE TABLE t (a)"));
    DataTable added = table;
    ASSERT_TRUE(store.AddToTable("t", added));
    EXPECT_EQ(Query(store, "SELECT * FROM t"), table);
    EXPECT_EQ(Csv(store, "PRAGMA encoding"), "encoding\nUTF-16le\n");
    EXPECT_EQ(Query(store, "SELECT x'00FF' AS a"), Column("a", {V(std::string("\0\xFF", 2))}));
}

TEST_F(StoreTest, PutsCellsIntoTheColumnsOfTheirNamesOrNothingAtAll) {
    Store store("rows");
    store.ExecuteNonQuery("CREATE TABLE t (A, b_c DEFAULT 'd')");
    DataTable table(VariantList(V("b-c", 2), V("a", 1)), VariantList(V("A", 3)), VariantList());
    EXPECT_TRUE(store.AddToTable("t", table));
    DataTable unknown(VariantList(V("A", 4)), VariantList(V("x", 1))),
        twice(VariantList(V("a", 1), V("A", 1)));
    EXPECT_FALSE(store.AddToTable("t", unknown) || store.AddToTable("t", twice));
    EXPECT_FALSE(store.AddToTable("none", table));
    EXPECT_EQ(TakeErrors().size(), 3u);
    EXPECT_EQ(Csv(store, "SELECT * FROM t"), "A,b_c\n1,2\n3,d\n,d\n");
}

TEST_F(StoreTest, FailsWholeAndOnceWhenTheDatabaseCannotBeWritten) {
    Store store("busy"), other("BUSY");
    store.ExecuteNonQuery("CREATE TABLE t (a)");
    DataTable table(VariantList(V("a", 1)));
    for (int i = 0; i < 14; ++i) table += DataTable(table);
    const std::tuple<Store&, const char*, const char*, const char*> cases[] = {
        {other, "BEGIN IMMEDIATE", "COMMIT", "database is locked"},
        {store, "PRAGMA query_only=1", "PRAGMA query_only=0", "attempt to write a readonly database"},
        {store, "PRAGMA max_page_count=5", "PRAGMA max_page_count=999999", "database or disk is full"},
    };
    for (const auto& [who, break_, mend, message] : cases) {
        SCOPED_TRACE(break_);
        Query(who, break_);
        EXPECT_FALSE(store.AddToTable("t", table));
        EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr(message)));
        Query(who, mend);
        EXPECT_EQ(Csv(store, "SELECT count(*) n FROM t"), "n\n0\n");
    }
    EXPECT_TRUE(store.AddToTable("t", table));
}

TEST_F(StoreTest, BeginsAnewBesideACorruptFile) {
    const std::string file = "stores/db-x.sqlite";
    Store("x").ExecuteNonQuery("CREATE TABLE t (a)");
    std::string noSchema = dir.Read(file);
    noSchema.replace(100, 400, 400, '\xAA');
    const std::string contents[] = {noSchema, std::string(5000, 'g'), noSchema};
    int copies = 0;
    for (const std::string& content : contents) {
        SCOPED_TRACE(content);
        dir.Write(file, content);
        m_log.Forget();
        Store store("x");
        EXPECT_TRUE(store.ExecuteNonQuery("CREATE TABLE t (a)"));
        ++copies;
        for (int n = 1; n <= copies; ++n)
            EXPECT_EQ(dir.Read(file + ".corrupt." + std::to_string(n)), contents[n - 1]);
        EXPECT_THAT(TakeErrors(),
                    ElementsAre(testing::StartsWith("Database 'x': "), HasSubstr("moved aside")));
    }
    std::fstream(dir.Native(file)).seekp(4096) << std::string(4096, 'g');  // the table's page
    Store store("x");
    EXPECT_FALSE(store.ExecuteNonQuery("SELECT * FROM t"));
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("malformed")));
}

TEST_F(StoreTest, TransactionsThatDoNotMatchAreLogged) {
    {
        Store store("tx");
        store.ExecuteNonQuery("CREATE TABLE t (a)");
        DataTable good(VariantList(V("a", 1))), bad(VariantList(V("a", 2)), VariantList(V("b", 3)));
        store.CommitTransaction();
        store.RollbackTransaction();
        store.BeginTransaction();
        store.BeginTransaction();
        EXPECT_TRUE(store.AddToTable("t", good));
        EXPECT_FALSE(store.AddToTable("t", bad));  // undoes itself only
        store.CommitTransaction();
        EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("no transaction"), HasSubstr("no transaction"),
                                              HasSubstr("within a tr"), HasSubstr("no column 'b'")));
        store.BeginTransaction();
        EXPECT_TRUE(store.AddToTable("t", good));
        store.RollbackTransaction();
        EXPECT_EQ(Csv(store, "SELECT a FROM t"), "a\n1\n");
        store.BeginTransaction();
    }
    EXPECT_THAT(m_log.Lines(ICLogger::Level::Warn), ElementsAre(HasSubstr("closed inside a transaction")));
}

TEST_F(StoreTest, ACommitThatFailsEndsItsTransaction) {
    {
        Store store("tx");
        for (const char* sql :
             {"PRAGMA foreign_keys=ON", "CREATE TABLE parent (id INTEGER PRIMARY KEY)",
              "CREATE TABLE child (id INTEGER REFERENCES parent (id) DEFERRABLE INITIALLY DEFERRED)"})
            ASSERT_TRUE(store.ExecuteNonQuery(sql));
        store.BeginTransaction();
        EXPECT_TRUE(store.ExecuteNonQuery("INSERT INTO child VALUES (7)"));
        store.CommitTransaction();
        EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("FOREIGN KEY"), HasSubstr("is rolled back")));
        EXPECT_TRUE(store.ExecuteNonQuery("INSERT INTO parent VALUES (1)"));
    }
    Store again("tx");
    EXPECT_EQ(Csv(again, "SELECT (SELECT count(*) FROM parent) p, (SELECT count(*) FROM child) c"),
              "p,c\n1,0\n");
}

TEST_F(StoreTest, KeepsPropertiesBetweenStores) {
    std::string other = "kept", value;
    const std::string name("n\0'", 3), text("v\0\xFF", 3);
    for (const std::string& written : {std::string("old"), text})
        Store("p").SetDatabaseProperty(name, written);
    Store("P").GetDatabaseProperty("n", other), Store("P").GetDatabaseProperty(name, value);
    EXPECT_EQ(other + value, "kept" + text);
    Store p("p");  // SQL may write what SetDatabaseProperty() does not
    EXPECT_TRUE(p.ExecuteNonQuery("DROP TABLE quillon_properties") &&
                p.ExecuteNonQuery("CREATE TABLE quillon_properties (name, value)") &&
                p.ExecuteNonQuery("INSERT INTO quillon_properties VALUES ('i', 7), ('n', NULL), ('r', 0.5)"));
    std::string i, n = "kept", r;
    p.GetDatabaseProperty("i", i), p.GetDatabaseProperty("n", n), p.GetDatabaseProperty("r", r);
    EXPECT_EQ(i + n + r, "7kept0.5");
}

TEST_F(StoreTest, DatabaseNamesStayInTheFolder) {
    const std::string names[] = {"..",       "../up", "..\\up", "c:\\x", "con", "a b.", std::string("z\0", 2),
                                 "\xC3\xA9", "%41"};
    for (const std::string& name : names)
        EXPECT_TRUE(Store(name).ExecuteNonQuery("CREATE TABLE t (a)")) << name;
    for (const std::string& name : {std::string(), std::string(201, 'x'), std::string(67, '.')})
        EXPECT_FALSE(Store(name).ExecuteNonQuery("SELECT 1")) << name;
    EXPECT_THAT(m_databases.folder.GetNames(), testing::UnorderedElementsAreArray(names));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Native()), {}), 1);
}

TEST_F(StoreTest, ARelativeFolderStaysWhereItWasWhenTheWorkingDirectoryChanges) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(dir.Native());
    const agent::DatabaseFolder folder("data");
    std::filesystem::current_path(before);
    EXPECT_TRUE(folder.Make());
    EXPECT_TRUE(dir.Exists("data"));
}

TEST_F(StoreTest, AThousandStoresLeaveNothingBehind) {
    const auto memory = sqlite3_memory_used();  // of every connection and open file
    for (int i = 0; i < 1000 / QUILLON_TEST_SLOWDOWN; ++i)
        ASSERT_TRUE(Store("many").WriteDataToTempTable("t", Column("a", {V(i)})));
    EXPECT_EQ(sqlite3_memory_used(), memory);
}

TEST_F(StoreTest, MayEndAfterItsEngine) {
    {
        const Store store("late"), later("later");
        ServiceLocator::Remove<ISqliteInstance>();
        m_databases.engine.reset();
        m_log.Forget();
        // Another engine leaves alone what is not its own.
        ServiceLocator::Put<ISqliteInstance>(&m_databases.engine.emplace(m_databases.folder));
    }
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("has not opened"), HasSubstr("has not opened")));
}

TEST_F(StoreTest, KeepsWhatWasCommittedWhenTheProcessIsKilled) {
    const auto properties = CommandOf(ChildCommand("commit", {dir.Path("stores")}), m_log);
    properties->maxOutputBytes = 1000;
    EXPECT_EQ(ProcessUtils::RunCliCommand(properties), -5);
    const std::string output = properties->outputTable.begin()->Get(1).GetStringValue();
    const long long told = std::count(output.begin(), output.end(), '\n');
    EXPECT_GT(told, 200);
    Store store("loop");
    const auto kept = Query(store, "SELECT max(n) FROM t").begin()->Get(0).GetLongLongValue();
    EXPECT_GE(kept, told);
    EXPECT_EQ(Csv(store, "SELECT count(DISTINCT n) n FROM t"), "n\n" + std::to_string(kept) + '\n');
}

}  // namespace quillon::test
