#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "data/RowRegions.h"
#include "quillon/DataTableIO.h"
#include "quillon/TextToDataTableParser.h"
#include "support/posix/RefusedCalls.h"

/// How much memory tables take and give back, as the heap of the C library tells. Under a sanitizer it
/// tells nothing, and other checks look for leaks.

namespace quillon {
namespace {

std::size_t BytesInUse() {
    const auto heap = ::mallinfo2();
    return heap.uordblks + heap.hblkhd + TakenRegionSlots() * kRegionSlot;
}

/// Returns whether memory comes from the heap that tells about itself.
bool IsHeapOfSystem() {
    const std::size_t before = BytesInUse();
    const std::vector<char> block(10'000);
    return BytesInUse() >= before + block.size();
}

/// Makes and frees a table whose names were never used before.
void UseFreshNames(int round) {
    const std::string prefix = "hostile-" + std::to_string(round) + "-";
    DataTable table;
    std::string json = "[{";
    for (int i = 0; i < 1000; ++i) {
        const std::string name = prefix + std::to_string(i);
        table.AddRow({{name, i}});
        json += (i == 0 ? "\"" : ",\"") + name + "\":1";
    }
    const DataTable copy = FromJson(json + "}]");
    const DataTable parsed = FromCsv(ToCsv(copy));
    table.RationaliseFirstRow();
}

TEST(DataTableMemory, NamesOfTablesGoWithTheTables) {
    for (int round = 0; round < 5; ++round) UseFreshNames(round);
    const std::size_t before = BytesInUse();
    for (int round = 5; round < 25; ++round) UseFreshNames(round);
    EXPECT_LT(BytesInUse(), before + 100'000) << "20,000 names of 14 to 17 bytes were made and freed";
}

TEST(DataTableMemory, NamesOfThreadsGoWithTheThreads) {
    const auto run = [](int round) { std::thread([round] { UseFreshNames(round); }).join(); };
    for (int round = 100; round < 105; ++round) run(round);
    const std::size_t before = BytesInUse();
    for (int round = 105; round < 125; ++round) run(round);
    EXPECT_LT(BytesInUse(), before + 100'000);
}

TEST(DataTableMemory, ACellTakesLittle) {
    const struct {
        int cells;
        const char* prefix;
        double most;  // bytes a cell
    } shapes[] = {{1, "Column", 100},
                  {3, "Column", 75},
                  {10, "Column", 60},
                  {6, "ANameOfTwentyCharac", 60},
                  {6, "a-name-with-dashes-", 60}};
    for (const auto& shape : shapes) {
        SCOPED_TRACE(shape.prefix + std::to_string(shape.cells));
        constexpr int kRows = 30'000;
        std::vector<std::string> names;
        for (int i = 0; i < shape.cells; ++i) names.push_back(shape.prefix + std::to_string(i));
        const std::size_t before = BytesInUse();
        DataTable table;
        for (int i = 0; i < kRows; ++i) {
            VariantList row;
            for (const std::string& name : names) row.Add(name, i);
            table.AddRow(std::move(row));
        }
        EXPECT_LE(static_cast<double>(BytesInUse() - before) / (kRows * shape.cells), shape.most);
    }
}

TEST(DataTableMemory, ARowThatIsReadTakesNoRoomForCellsThatItLacks) {
    constexpr int kColumns = 2000, kRows = 1000;
    TextToDataTableParser parser;
    for (int i = 0; i < kColumns; ++i)
        parser.AddField<std::string>("v", std::make_unique<SpaceSeparatedField>());
    std::string lines;
    for (int i = 0; i < kRows; ++i) lines += "x\n";
    const std::size_t before = BytesInUse();
    DataTable table;
    parser.Parse(lines, table);
    EXPECT_LT(BytesInUse(), before + 500'000);
    EXPECT_EQ(table.GetNumberOfRows(), std::size_t{kRows});
}

TEST(DataTableMemory, ARowThatWasMovedOutKeepsNoOther) {
    std::vector<VariantList> kept;
    const std::size_t before = BytesInUse();
    {
        DataTable table;
        for (int i = 0; i < 100'000; ++i) table.AddRow({{"name", "x"}, {"pid", i}});
        for (VariantList& row : table) {
            if (row["pid"].GetLongLongValue() % 1000 == 0) kept.push_back(std::move(row));
        }
    }
    EXPECT_LT(BytesInUse(), before + 100'000);
    EXPECT_EQ(kept.back()["pid"].GetLongLongValue(), 99'000);
}

/// Returns the memory in which this process resides.
std::size_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0, resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

TEST(DataTableMemory, AChangeThatMemoryIsMissingForChangesNothing) {
    if (!IsHeapOfSystem()) GTEST_SKIP() << "the heap is that of a sanitizer";
    const std::string text(40, 'x');
    DataTable whole;
    for (int i = 0; i < 20; ++i) whole.AddRow({{"a-name-of-the-heap", text}, {"number", i}});
    void (*const changes[])(DataTable&) = {
        [](DataTable& table) { table.Append(&table, 15); },
        [](DataTable& table) { table.AddRow(*table.begin()); },
        [](DataTable& table) { table.RenameColumn("a-name-of-the-heap", "a-later-name-of-the-heap"); },
        [](DataTable& table) {
            table.SetDefaultColumnNames({"a", "another-name-of-the-heap", "b"});
        },
    };
    for (const auto change : changes) {
        bool refused = true;
        for (int before = 0; refused && before < 1000; ++before) {
            DataTable table = whole;
            test::TheRefusedCalls() = {test::RefusedCalls::Memory, before, 1000};
            try {
                change(table);
            } catch (const std::bad_alloc&) {
            }
            refused = std::exchange(test::TheRefusedCalls(), {}).refused != 0;
            EXPECT_EQ(table == whole, refused) << before;
        }
        EXPECT_FALSE(refused);
    }
}

TEST(DataTableMemory, FreedMemoryReturnsToTheSystem) {
    if (!IsHeapOfSystem()) GTEST_SKIP() << "the heap is that of a sanitizer";
    constexpr std::size_t kMegabyte = 1'000'000;
    DataTable kept;  // lies among what is freed
    const std::size_t before = ResidentBytes();
    {
        DataTable table;
        for (int i = 0; i < 300'000; ++i) {
            table.AddRow({{"name", std::string(40, 'x')}, {"pid", i}});
            if (i % 10'000 == 0) kept.AddRow(*table.begin());
        }
        ASSERT_GT(ResidentBytes(), before + 30 * kMegabyte);
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // longer than the pause of releases
    }
    EXPECT_LT(ResidentBytes(), before + 10 * kMegabyte);
    EXPECT_EQ(kept.GetNumberOfRows(), 30u);
}

}  // namespace
}  // namespace quillon
