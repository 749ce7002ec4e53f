#include <chrono>
#include <cstdio>
#include <fstream>
#include <set>

#include "examples/StoreTest.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/Threads.h"

namespace quillon::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using StoreTortureTest = StoreTest;
using Clock = std::chrono::steady_clock;

constexpr int kOpeners = 3;
constexpr auto kLongestTest = std::chrono::seconds(60);

/// open FOLDER NAME: opens the database when the file FOLDER/go is there, adds a row of that name and
/// prints it once it is committed. A child waits half a minute at most.
const ChildMode open("open", [](const std::vector<std::string>& a) {
    RecordingLogger log;
    Databases databases(a[0], agent::SqliteEngine::kBusyMilliseconds);
    if (!AwaitFile(ToNative(a[0]) / "go")) return 1;
    Store store("shared");
    bool existed = false;
    store.EnsureTableExists("t", {{"name", Store::Text}}, {}, existed);
    DataTable row(VariantList(V("name", a[1])));
    if (store.AddToTable("t", row)) {
        std::printf("%s", a[1].c_str());
    } else {
        for (const std::string& line : log.Lines()) std::printf("%s\n", line.c_str());
    }
    return std::fflush(stdout);
});

/// insert FOLDER: prints whether a row could be added.
const ChildMode insert("insert", [](const std::vector<std::string>& a) {
    RecordingLogger log;
    Databases databases(a[0]);
    Store store("read");
    std::printf("%d", store.ExecuteNonQuery("INSERT INTO t VALUES (2)") ? 1 : 0);
    return std::fflush(stdout);
});

std::vector<std::string> Corrupt(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.find(".corrupt") != std::string::npos && !name.ends_with("-wal") && !name.ends_with("-shm"))
            names.push_back(name);
    }
    return names;
}

/// Fills the part of a damaged file behind its header, which makes it seem a database until it is read.
std::string DamagedFile(const TempDir& dir, int round) {
    std::string file = dir.Read("good");
    file.replace(100, 400, 400, '\xAA');
    return file + std::to_string(round);
}

}  // namespace

TEST_F(StoreTortureTest, OpenersOfADamagedFileLoseNoRowAndNoCopy) {
    const int rounds = kWindows ? 3 : 25 / QUILLON_TEST_SLOWDOWN + 2;
    const auto end = Clock::now() + kLongestTest;
    Store("shared").ExecuteNonQuery("CREATE TABLE t (name TEXT)");
    dir.Write("good", dir.Read("stores/db-shared.sqlite"));
    std::set<std::string> damaged;
    for (int round = 0; round < rounds && Clock::now() < end; ++round) {
        SCOPED_TRACE(round);
        const std::string content = *damaged.insert(DamagedFile(dir, round)).first;
        for (const char* suffix : {"-wal", "-shm"})
            fs::remove(dir.Native(std::string("stores/db-shared.sqlite") + suffix));
        dir.Write("stores/db-shared.sqlite", content);
        std::vector<std::string> told(kOpeners);
        Threads threads(kOpeners, [&](int n) {
            const auto child =
                CommandOf(ChildCommand("open", {dir.Path("stores"), std::to_string(n)}), m_log);
            child->timeoutSecs = 50;
            child->killOnTimeout = true;
            EXPECT_EQ(ProcessUtils::RunCliCommand(child), 0);
            if (!child->outputTable.Empty())
                told[static_cast<std::size_t>(n)] = child->outputTable.begin()->Get(1).GetStringValue();
        });
        dir.Write("stores/go", "");
        threads.Join();
        fs::remove(dir.Native("stores/go"));
        Store store("shared");
        EXPECT_EQ(Csv(store, "SELECT name FROM t ORDER BY name"), "name\n0\n1\n2\n");
        EXPECT_THAT(told, ElementsAre("0", "1", "2"));
    }
    std::set<std::string> kept;
    for (const std::string& name : Corrupt(dir.Native("stores"))) kept.insert(dir.Read("stores/" + name));
    EXPECT_EQ(kept, damaged);
}

TEST_F(StoreTortureTest, AnyDamageLeavesAStoreThatWorks) {
    const auto end = Clock::now() + kLongestTest;
    {
        Store store("d");
        store.ExecuteNonQuery("CREATE TABLE t (a)");
        DataTable rows = Column("a", std::vector<Variant>(500, V("some text that fills pages")));
        store.AddToTable("t", rows);
    }
    const std::string file = "stores/db-d.sqlite", good = dir.Read(file);
    unsigned seed = 1;
    const auto next = [&seed] { return (seed = seed * 1103515245u + 12345u) >> 8; };
    for (int round = 0; round < 60 / QUILLON_TEST_SLOWDOWN && Clock::now() < end; ++round) {
        SCOPED_TRACE(round);
        std::string damaged = good;
        for (unsigned n = next() % 50; n > 0; --n)
            damaged[next() % damaged.size()] = static_cast<char>(next());
        if (next() % 4 == 0) damaged.resize(next() % damaged.size());
        dir.Write(file, damaged);
        Store store("d");
        bool existed = false;
        store.EnsureTableExists("new", {{"a", Store::Text}}, {}, existed);
        DataTable row(VariantList(V("a", 1)));
        std::vector<std::string> faults;
        const bool isTaken = store.AddToTable("new", row);
        EXPECT_TRUE(isTaken || !store.Check(faults));
    }
}

TEST_F(StoreTortureTest, AFileThatWasMovedAwayIsNoticed) {
    if (kWindows) GTEST_SKIP() << "Windows lets nobody move the file of an open database";
    const std::string file = "stores/db-m.sqlite";
    Store store("m");
    store.ExecuteNonQuery("CREATE TABLE t (a)");
    fs::rename(dir.Native(file), dir.Native("moved"));
    DataTable row(VariantList(V("a", 1)));
    EXPECT_FALSE(store.AddToTable("t", row));
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("its file was moved away")));
    EXPECT_TRUE(store.ExecuteNonQuery("CREATE TABLE t (a)") && store.AddToTable("t", row));
    EXPECT_EQ(Csv(*std::make_unique<Store>("m"), "SELECT a FROM t"), "a\n1\n");
    EXPECT_TRUE(store.TryBegin() && store.AddToTable("t", row));
    fs::remove(dir.Native(file));
    EXPECT_FALSE(store.TryCommit());
    EXPECT_THAT(TakeErrors(), ElementsAre(HasSubstr("its file was moved away")));
    store.RollbackTransaction();
    EXPECT_THAT(TakeErrors(), IsEmpty()) << "nothing is left to roll back";
    fs::rename(dir.Native("stores"), dir.Native("others"));
    EXPECT_FALSE(store.ExecuteNonQuery("CREATE TABLE t (a)"));
    EXPECT_TRUE(store.ExecuteNonQuery("CREATE TABLE t (a)") && store.AddToTable("t", row));
}

TEST_F(StoreTortureTest, AQueryGoesOnThoughItsDatabaseIsOpenedAnew) {
    if (kWindows) GTEST_SKIP() << "Windows lets nobody move the file of an open database";
    Store store("m");
    int rows = 0;
    const auto visit = [&](VariantList&) {
        DataTable none;
        if (++rows == 1) fs::rename(dir.Native("stores/db-m.sqlite"), dir.Native("moved"));
        return rows > 1 || !store.ExecuteQuery("SELECT 1", none);
    };
    const SqlQuery query{
        "WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c LIMIT 5000) SELECT n FROM c"};
    EXPECT_TRUE(store.VisitRows(query, visit));
    EXPECT_EQ(rows, 5000);
}

TEST_F(StoreTortureTest, WhoReadsItsFilesTakesNoLockFromADatabase) {
    Store store("read");
    ASSERT_TRUE(store.ExecuteNonQuery("CREATE TABLE t (a)"));
    Store("read").ExecuteNonQuery("SELECT * FROM t");
    ASSERT_TRUE(store.TryBegin() && store.ExecuteNonQuery("INSERT INTO t VALUES (1)"));
    for (const auto& file : fs::directory_iterator(dir.Native("stores"))) std::ifstream(file.path()).get();
    EXPECT_EQ(RunChild("insert", {dir.Path("stores")}).out, "0");
    EXPECT_TRUE(store.TryCommit());
    EXPECT_EQ(RunChild("insert", {dir.Path("stores")}).out, "1");
    EXPECT_EQ(Csv(store, "SELECT a FROM t"), "a\n1\n2\n");
    EXPECT_THAT(TakeErrors(), IsEmpty());
}

TEST_F(StoreTortureTest, FilesArePrivateAndTheLogIsBounded) {
    Store store("big");
    store.ExecuteNonQuery("CREATE TABLE t (a)");
    DataTable rows = Column("a", std::vector<Variant>(20'000, V(std::string(1000, 'x'))));
    EXPECT_TRUE(store.AddToTable("t", rows));
    DataTable row(VariantList(V("a", 1)));
    for (int n = 0; n < 3; ++n) EXPECT_TRUE(store.AddToTable("t", row));
    EXPECT_LE(fs::file_size(dir.Native("stores/db-big.sqlite-wal")), 8u << 20);
    if (kWindows) return;  // its permissions are access lists
    constexpr auto kOwner = fs::perms::owner_read | fs::perms::owner_write;
    for (const auto& entry : fs::directory_iterator(dir.Native("stores")))
        EXPECT_EQ(entry.status().permissions(), kOwner) << entry.path();
}

}  // namespace quillon::test
