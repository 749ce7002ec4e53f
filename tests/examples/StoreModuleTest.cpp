#include <gmock/gmock.h>

#include "host/Host.h"
#include "quillon/DataTableIO.h"
#include "support/ChildMain.h"
#include "support/TempDir.h"

namespace quillon::test {

TEST(StoreModule, SavesQueriesAndLists) {
    const TempDir dir;
    const agent::Host host({}, dir.Path("stores"));
    const auto run = [&host](const std::string& method, const std::vector<std::string>& arguments) {
        const InvocationResult result = host.Run("Store." + method, arguments);
        std::string text = result.errorMessage + ToCsv(result.resultTable);
        std::erase(text, '\r');
        return std::to_string(result.resultCode) + '|' + text;
    };
    const std::string heading = "0|Database,Table,Rows", print = ChildCommand("print", {"a 1|b 2", "0"});
    std::vector<std::string> save{"database=Inv", "table=T x", "command=" + print, "columns=N S:integer"};
    const std::vector<std::string> query{"database=INV", "sql=SELECT * FROM [T x]"};
    EXPECT_EQ(run("Save", save), heading + ",Created\nInv,T x,2,true\n");
    EXPECT_EQ(run("Save", save), heading + ",Created\nInv,T x,2,false\n");
    EXPECT_EQ(run("Query", query), "0|N,S\na,1\nb,2\na,1\nb,2\n");
    EXPECT_EQ(run("List", {}), heading + "\ninv,T x,4\n");
    save[3] = "replace=true";
    EXPECT_EQ(run("Save", save), heading + ",Created\nInv,T x,2,true\n");
    EXPECT_EQ(run("Query", query), "0|ExitCode,LineNumber,Output\n0,0,a 1\n0,1,b 2\n");
    EXPECT_EQ(run("Query", {query[0], query[1], "maxRows=1"}), "0|ExitCode,LineNumber,Output\n0,0,a 1\n");
    save.emplace_back("skip=1");
    EXPECT_EQ(run("Save", save), heading + ",Created\nInv,T x,1,true\n");
    EXPECT_EQ(run("Query", query), "0|ExitCode,LineNumber,Output\n0,1,b 2\n");
    save.back() = "skip=3";
    EXPECT_EQ(run("Save", save), heading + ",Created\nInv,T x,0,true\n");
    save.pop_back();
    const std::string endless =
        "sql=WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n FROM c) SELECT n FROM c";
    EXPECT_EQ(run("Query", {query[0], endless, "timeout=20"}), "3|The statement failed in database 'INV'");
    EXPECT_EQ(run("Query", {query[0], endless, "maxRows=2"}), "0|n\n1\n1\n");
    EXPECT_EQ(run("Check", {query[0]}), "0|Database,Fault\n");
    save[3] = "columns=N";
    EXPECT_EQ(run("Save", save), "3|Could not save table 'T x' in database 'Inv'");
    EXPECT_EQ(run("Query", {"database=none", query[1]}), "2|There is no database 'none'");
    // A command that writes nothing makes the columns as well.
    const std::string types =
        "sql=SELECT group_concat(name || ' ' || type) t FROM pragma_table_info('Empty')";
    const std::vector<std::string> silent{"database=Inv", "table=Empty", "replace=true",
                                          "command=" + ChildCommand("print", {"", "0"})};
    EXPECT_EQ(run("Save", silent), heading + ",Created\nInv,Empty,0,true\n");
    EXPECT_EQ(run("Query", {query[0], types}), "0|t\n\"ExitCode INTEGER,LineNumber INTEGER,Output TEXT\"\n");
    EXPECT_EQ(run("Save", {silent[0], silent[1], silent[2], silent[3], "columns=B:boolean R:real T:time"}),
              heading + ",Created\nInv,Empty,0,true\n");
    EXPECT_EQ(run("Query", {query[0], types}), "0|t\n\"B INTEGER,R REAL,T TEXT\"\n");
    save[2] = "wql=SELECT Name FROM Win32_ComputerSystem";
    save[3] = "replace=true";
    EXPECT_EQ(run("Save", save), heading + ",Created\nInv,T x,1,true\n");
    EXPECT_THAT(run("Query", query), testing::StartsWith("0|Name\n"));
    save[3] = "command=" + print;
    EXPECT_EQ(run("Save", save), "2|Either 'command' or 'wql' must be given");
    dir.Write("stores/db-bad.sqlite", "no database");
    EXPECT_THAT(run("Check", {"database=bad"}),
                testing::AllOf(testing::StartsWith("3|Database 'bad' is damaged"),
                               testing::HasSubstr("moved aside")));
    EXPECT_EQ(run("Check", {"database=bad"}), "0|Database,Fault\n");
}

}  // namespace quillon::test
