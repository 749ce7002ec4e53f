#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "examples/StoreTest.h"
#include "support/ChildMain.h"

namespace quillon::test {

namespace {

using testing::HasSubstr;
using StoreRightsTest = StoreTest;
constexpr ::uid_t kNobody = 65534;

/// read FOLDER: prints the table and what is logged, without the rights of root.
const ChildMode read("read", [](const std::vector<std::string>& a) {
    if (::setuid(kNobody) != 0) return 77;
    RecordingLogger log;
    Databases databases(a[0]);
    {
        Store store("r");
        DataTable found;
        store.ExecuteQuery("SELECT a FROM t", found);
        std::printf("%s%d", ToCsv(found).c_str(), store.ExecuteNonQuery("INSERT INTO t VALUES (2)") ? 1 : 0);
    }
    for (const std::string& line : log.Lines()) std::printf("\n%s", line.c_str());
    return 0;
});

/// fill FOLDER: adds rows until the file may not grow any more, then prints how many were taken.
const ChildMode fill("fill", [](const std::vector<std::string>& a) {
    const ::rlimit limit{1 << 20, 1 << 20};
    std::signal(SIGXFSZ, SIG_IGN);
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 77;
    RecordingLogger log;
    Databases databases(a[0]);
    Store store("full");
    store.ExecuteNonQuery("CREATE TABLE t (a)");
    for (int taken = 0; taken < 10'000; ++taken) {
        DataTable rows = Column("a", std::vector<Variant>(10, V(std::string(1000, 'x'))));
        if (store.AddToTable("t", rows)) continue;
        std::printf("%d", taken);
        return 0;
    }
    return 1;
});

}  // namespace

// Rights as Linux has them; only root can give up its own.
TEST_F(StoreRightsTest, AFileThatCannotBeWrittenIsReadAndOneThatCannotBeReadSaysWhy) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root";
    Store("r").ExecuteNonQuery("CREATE TABLE t AS SELECT 1 AS a");
    ::chmod(dir.Native().c_str(), 0755);
    const std::string folder = dir.Native("stores").string(), file = folder + "/db-r.sqlite";
    const struct {
        ::mode_t folder, file;
        const char *table, *logged;
    } cases[] = {
        {0755, 0644, "a\r\n1\r\n0", "Database 'r' can only be read"},
        {0777, 0644, "a\r\n1\r\n0", "Database 'r' can only be read"},
        {0755, 0600, "0", "unable to open database file: Permission denied (open "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.logged);
        ::chmod(folder.c_str(), c.folder);
        ::chmod(file.c_str(), c.file);
        const ChildOutput child = RunChild("read", {dir.Path("stores")});
        EXPECT_TRUE(child.succeeded);
        std::string table = c.table;
        std::erase(table, '\r');
        EXPECT_THAT(child.out, testing::StartsWith(table + '\n'));
        EXPECT_THAT(child.out, HasSubstr(c.logged));
    }
}

// A limit on the size of a file stands for the end of the disk, which Windows does not have.
TEST_F(StoreRightsTest, AFullDiskLosesNoRowThatWasTaken) {
    const ChildOutput child = RunChild("fill", {dir.Path("stores")});
    ASSERT_TRUE(child.succeeded);
    Store store("full");
    EXPECT_EQ(Csv(store, "SELECT count(*) / 10 AS n FROM t"), "n\n" + child.out + '\n');
    std::vector<std::string> faults;
    EXPECT_TRUE(store.Check(faults));
}

}  // namespace quillon::test
