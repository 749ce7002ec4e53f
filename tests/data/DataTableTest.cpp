#include "quillon/DataTable.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "quillon/DataTableIO.h"
#include "support/RecordingLogger.h"
#include "support/Threads.h"

namespace quillon {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

VariantList Row(int value) { return VariantList(Variant("a", value)); }

DataTable Emptied() {
    DataTable table(Row(1));
    table.Clear(true);
    return table;
}

TEST(DataTable, EqualityAndSimilarity) {
    const VariantList ab(Variant("a", 1), Variant("b", 2)), ba(Variant("b", 2), Variant("a", 1));
    DataTable renamed(Row(1));
    renamed.SetDefaultColumnNames({"b"});
    const struct {
        const char* what;
        DataTable left, right;
        std::vector<bool> expected;  ///< ==, !=, Similar, NotSimilar, ContentEqual
    } cases[] = {
        {"undefined and emptied", {}, Emptied(), {true, true, true, true, true}},
        {"same rows, other columns", DataTable(Row(1)), renamed, {false, true, false, true, true}},
        {"cells in another order", DataTable(ab), DataTable(ba), {false, true, true, false, false}},
        {"rows in another order",
         DataTable(Row(1), Row(2)),
         DataTable(Row(2), Row(1)),
         {false, true, false, true, false}},
        {"one row more", DataTable(Row(1)), DataTable(Row(1), Row(2)), {false, true, false, true, false}},
    };
    for (const auto& [what, left, right, expected] : cases) {
        EXPECT_THAT(expected, ElementsAre(left == right, left != right, left.Similar(right, false),
                                          left.NotSimilar(right), left.ContentEqual(right)))
            << what;
    }
    EXPECT_TRUE(DataTable(Row(1)).Similar(renamed, true));
    EXPECT_FALSE(DataTable() != DataTable());
}

TEST(DataTable, IsUndefinedUntilItGetsARowOrAColumn) {
    DataTable table;
    table.SetDefaultColumnNames({});
    table.Append(nullptr, 5);
    table += Emptied();
    EXPECT_TRUE(table.IsUndefined());
    EXPECT_TRUE(table.AddStringCol("a") && table.AddNullCol("a"));
    EXPECT_FALSE(table.IsUndefined());
    table.AddRow(VariantList(Variant("other", 1)));
    EXPECT_FALSE(table.AddStringCol("b"));
    EXPECT_THAT(table.GetColumnNames(), ElementsAre("a", "a"));
    EXPECT_FALSE(Emptied().IsUndefined());
    table.MarkAsPromotedFromScalar();
    const DataTable moved = std::move(table);
    EXPECT_TRUE(table.IsUndefined() && !table.WasPromotedFromScalar());  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(moved.WasPromotedFromScalar() && !moved.IsUndefined());
    table.AddRow(Row(4));
    EXPECT_TRUE(table == DataTable(Row(4)));
}

TEST(DataTable, AppendsEvenItself) {
    DataTable table(Row(1), Row(2), Row(3));
    table.Append(&table, 2);
    EXPECT_TRUE(table == DataTable(Row(1), Row(2), Row(3), Row(1), Row(2)));
    table += table;
    DataTable& alias = table;
    table += std::move(alias);
    EXPECT_EQ(table.GetNumberOfRows(), 20u);
    EXPECT_EQ((table + table).GetNumberOfRows(), 40u);
    table = alias;
    table = std::move(alias);
    EXPECT_EQ(table.GetNumberOfRows(), 20u);

    DataTable other(Row(7)), target;
    target += std::move(other);
    EXPECT_TRUE(target == DataTable(Row(7)));
    EXPECT_TRUE(other.IsUndefined());  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE((DataTable() + DataTable()).IsUndefined());
}

TEST(DataTable, WalksUnsetTheirCursorWhenRowsGo) {
    DataTable table(Row(1), Row(2), Row(3));
    EXPECT_EQ(table.GetNextRow(), nullptr);
    EXPECT_EQ(*table.GetFirstRow(), Row(1));
    table.RemoveRow(3);
    EXPECT_EQ(*table.GetNextRow(), Row(2));
    table.RemoveRow(2);  // the cursor is on it
    EXPECT_EQ(table.GetNextRow(), nullptr);
    VariantList row;
    EXPECT_TRUE(table.GetFirstRow(row) && table.GetNextRow(row) && !table.GetNextRow(row));
    EXPECT_EQ(row, Row(2));

    VariantList* first = table.GetFirstRow();
    for (int i = 0; i < 100; ++i) table.AddRow(Row(i));
    EXPECT_EQ(table.GetFirstRow(), first);
    const DataTable copy = table;
    EXPECT_EQ(copy.GetNextRow(), nullptr);
    DataTable::const_iterator position;
    EXPECT_EQ(*copy.cGetFirstRow(position), Row(1));
    EXPECT_EQ(*copy.cGetNextRow(position), Row(2));
    EXPECT_EQ(DataTable().cGetFirstRow(position), nullptr);
}

TEST(DataTable, EnumerationEndsAtFalse) {
    long long sum = 0;
    DataTable(Row(1), Row(2), Row(3)).EnumerateRows([&](const VariantList& row) {
        return (sum += row["a"].GetLongLongValue()) < 3;
    });
    EXPECT_EQ(sum, 3);
    EXPECT_THROW(DataTable(Row(1)).EnumerateRows({}), std::bad_function_call);
}

TEST(DataTable, RenamedColumnMovesToTheEnd) {
    const VariantList ab(Variant("a", 1), Variant("b", 2)), ac(Variant("a", 1), Variant("c", 3));
    DataTable table(ab, ac, VariantList(Variant("d", 4)));
    table.SetDefaultColumnNames({"a", "b"});
    table.RenameColumn("a", "c");
    DataTable expected(VariantList(Variant("b", 2), Variant("c", 1)), ac, VariantList(Variant("d", 4)));
    expected.SetDefaultColumnNames({"b", "c"});
    EXPECT_TRUE(table == expected);

    const VariantList& first = *table.begin();
    table.RenameColumn(first[0].GetName(), "x-y");
    EXPECT_EQ(first["x-y"].GetBindName(), "x_y");
}

TEST(DataTable, RationalisedFirstRowNamesEveryColumn) {
    test::RecordingLogger log;
    DataTable table(Row(1), VariantList(Variant("z", true), Variant::NullVariant("late"), Variant("b", 0.5)),
                    VariantList(Variant::NullVariant("c"), Variant("late", "text")));
    EXPECT_THAT(table.GetAllColumnNames(), ElementsAre("a", "z", "late", "b", "c"));
    EXPECT_THAT(
        DataTable(VariantList(Variant("\xFF", 1), Variant("x", 1), Variant("x", 2))).GetAllColumnNames(),
        ElementsAre("\xFF", "x"));
    table.RationaliseFirstRow();
    EXPECT_THAT(table.GetColumnNames(), ElementsAre("a", "b", "late", "z", "c"));
    EXPECT_EQ(table.begin()->ToString(" ", nullptr), "1 null null null null");
    EXPECT_EQ(table.GetNextRow()->Size(), 3u);

    table.GetFirstRow()->Remove("z");
    table.RationaliseFirstRow();
    EXPECT_THAT(table.GetColumnNames(), ElementsAre("a", "b", "late", "c"));
    table.AddRow(VariantList(Variant("when", TimePoint())));
    table.RationaliseFirstRow();
    EXPECT_THAT(table.GetColumnNames(), ElementsAre("a", "b", "late", "c", "when", "z"));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error), ElementsAre(HasSubstr("in Variant(,type_info)")));
}

TEST(DataTable, DumpsItsRows) {
    test::RecordingLogger log;
    DataTable(Row(1)).Dump("50%d", nullptr, 0);
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                ElementsAre("Start of DataTable dump with 1 row(s): 50%d", " IsUndefined == false",
                            " Column names: a", " Start of VariantList dump with 1 column(s): DataTable row",
                            "  Variant 'a' of type long long = '1'",
                            " End of VariantList dump: DataTable row", "End of DataTable dump: 50%d"));
}

TEST(DataTable, SortsByColumnsAndKeepsTheOrderOfEquals) {
    DataTable table;
    table.AddRow({{"k", 2}, {"n", "a"}});
    table.AddRow({{"n", "b"}});
    table.AddRow({{"k", 1.5}, {"n", "c"}});
    table.AddRow({{"k", 2}, {"n", "d"}});
    table.AddRow({{"k", nullptr}, {"n", "e"}});
    table.SortBy({"k"});
    std::string order;
    for (const VariantList& row : table) order += row["n"].GetStringValue();
    EXPECT_EQ(order, "becad");
    EXPECT_EQ(table.GetNextRow(), nullptr);
}

TEST(DataTable, SortsTextsThatBeginAlikeAndThenByTheNextColumn) {
    DataTable table;
    table.AddRow({{"text", "prefix-12345678b"}, {"n", "a"}});
    table.AddRow({{"text", "prefix-12345678a"}, {"n", "c"}});
    table.AddRow({{"text", "prefix-"}, {"n", "d"}});
    table.AddRow({{"text", "prefix-12345678a"}, {"n", "b"}});
    table.SortBy({"text", "n"});
    std::string order;
    for (const VariantList& row : table) order += row["n"].GetStringValue();
    EXPECT_EQ(order, "dbca");
}

TEST(DataTable, TablesMoveBetweenThreads) {
    DataTable table;
    for (int round = 0; round < 20; ++round) {
        std::thread([&table, round] {  // each thread ends before the table that it adds to
            const DataTable former = table;
            table.AddRow({{"a-name", round}, {"name " + std::to_string(round), std::string(30, 'x')}});
            table.AddRow(*table.begin());
            table.RemoveRow(table.GetNumberOfRows() - 1);
            DataTable made = std::move(table);
            table = former;
            table += std::move(made);
            for (auto rows = former.GetNumberOfRows(); rows > 0; --rows) table.RemoveRow(0);
        })
            .join();
    }
    ASSERT_EQ(table.GetNumberOfRows(), 20u);
    for (int round = 0; round < 20; ++round) {
        const VariantList& row = table.GetRow(static_cast<unsigned long long>(round));
        EXPECT_EQ(row["a-name"].GetLongLongValue(), round);
        EXPECT_EQ(row[0].GetBindName() + row[1].GetName(), "a_namename " + std::to_string(round));
    }
}

/// Rows of a large table lie in memory that they share; whatever is done with one, the others stay.
TEST(DataTable, RowsMayBeChangedAndMovedInAnyOrder) {
    std::mt19937 random(17);
    const auto pick = [&](std::size_t below) { return static_cast<std::size_t>(random() % below); };
    DataTable tables[2];
    std::vector<VariantList> expected[2], moved, expectedMoved;
    for (int step = 0; step < 6000; ++step) {
        const std::size_t side = pick(2);
        DataTable& table = tables[side];
        std::vector<VariantList>& rows = expected[side];
        VariantList row;
        for (std::size_t i = pick(6); i > 0; --i)
            row.Add("c" + std::to_string(i), std::string(pick(40), 'x'));
        row.Add("id", step);
        const std::size_t action = rows.size() < 500 ? 0 : pick(200);
        const std::size_t place = rows.empty() ? 0 : pick(rows.size());
        if (action < 150) {
            rows.push_back(row);
            action % 2 == 0 ? table.AddRow(row) : table.AddRow(std::move(row));
        } else if (action < 160) {
            table.RemoveRow(place);
            rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(place));
        } else if (action < 170) {
            table.GetRow(place).Add("more", step);
            rows[place].Add("more", step);
        } else if (action < 180) {
            table.GetRow(place) = row;
            rows[place] = row;
        } else if (action < 190) {
            moved.push_back(std::move(table.GetRow(place)));
            expectedMoved.push_back(std::move(rows[place]));
        } else if (action < 192) {
            DataTable copy = table;
            std::thread([&] { table = std::move(copy); }).join();
        } else if (action == 192) {
            tables[1 - side] += std::move(table);
            expected[1 - side].insert(expected[1 - side].end(), rows.begin(), rows.end());
            rows.clear();
        } else if (action == 193) {
            table.Clear(false);
            rows.clear();
        }
    }
    for (int side : {0, 1}) {
        ASSERT_EQ(tables[side].GetNumberOfRows(), expected[side].size());
        EXPECT_TRUE(std::equal(expected[side].begin(), expected[side].end(), tables[side].begin()));
        tables[side] = DataTable();
    }
    EXPECT_EQ(moved, expectedMoved);
}

/// Only under the thread sanitizer can this fail: const operations must keep nothing in the table.
TEST(DataTable, SixThreadsReadOneTable) {
    DataTable table;
    for (int i = 0; i < 200; ++i) {
        table.AddRow(
            {{"name-" + std::to_string(i % 3), i}, {"text", std::string(30, 'x')}, {"time", TimePoint()}});
    }
    const DataTable& shared = table;
    const std::string expected = ToJson(shared);
    std::atomic<int> wrong{0};
    test::Threads(6, [&](int) {
        for (int round = 0; round < 5; ++round) {
            const DataTable copy = shared;
            bool right = ToJson(copy) == expected && copy == shared && shared.Similar(copy, false);
            for (const VariantList& row : shared) {
                right = right && row.Find("text")->GetStringValue().size() == 30;
                right =
                    right && row[0].GetBindName() != row[0].GetName() && row[2].GetStringValue().size() == 24;
            }
            if (!right) ++wrong;
        }
    }).Join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace quillon
