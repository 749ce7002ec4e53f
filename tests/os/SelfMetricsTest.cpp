#include "quillon/SelfMetrics.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <thread>
#include <vector>

#include "support/System.h"
#include "support/TempDir.h"

namespace quillon {

namespace {

using testing::ElementsAre;

/// Figures by name; those that the system does not tell are left out.
std::map<std::string, long long> Figures() {
    std::map<std::string, long long> figures;
    for (const VariantList& row : SelfMetrics()) {
        if (!row.Get("Value").IsNull())
            figures[row.Get("Name").GetStringValue()] = row.Get("Value").GetLongLongValue();
    }
    return figures;
}

}  // namespace

TEST(SelfMetrics, HasItsColumnsAndRows) {
    const DataTable table = SelfMetrics();
    EXPECT_THAT(table.GetDefaultColumnNames(), ElementsAre("Name", "Value", "Unit"));
    std::vector<std::string> names;
    for (const VariantList& row : table)
        names.push_back(row.Get("Name").GetStringValue() + " " + row.Get("Unit").GetStringValue());
    EXPECT_THAT(names, testing::IsSupersetOf({"ResidentMemory bytes", "PrivateMemory bytes", "UserTime ms",
                                              "KernelTime ms", "Threads count", "Handles count",
                                              "DroppedLogLines count"}));
}

TEST(SelfMetrics, FollowsWhatTheProcessDoes) {
    constexpr long long kBytes = 64LL << 20;
    auto before = Figures();
    const std::vector<char> touched(kBytes, 'x');
    const test::TempDir dir;
    std::vector<std::ofstream> files;
    for (int i = 0; i < 20; ++i) files.emplace_back(dir.Native(std::to_string(i)));
    std::map<std::string, long long> during;
    std::thread([&] { during = Figures(); }).join();
    EXPECT_GE(during["ResidentMemory"] - before["ResidentMemory"], kBytes * 9 / 10);
    const std::pair<const char*, long long> untoldUnderEmulation[] = {{"PrivateMemory", kBytes * 9 / 10},
                                                                      {"Handles", 20}};
    for (const auto& [name, growth] : untoldUnderEmulation) {
        if (before.contains(name)) {
            EXPECT_GE(during[name] - before[name], growth) << name;
        }
    }
    EXPECT_EQ(during["Threads"] - before["Threads"], 1);
    EXPECT_GE(during["UserTime"] + during["KernelTime"], before["UserTime"] + before["KernelTime"]);
}

}  // namespace quillon
