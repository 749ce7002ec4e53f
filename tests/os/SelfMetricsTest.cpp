#include "quillon/SelfMetrics.h"

#include <gmock/gmock.h>

#include <fstream>
#include <future>
#include <map>

#include "support/TempDir.h"
#include "support/Threads.h"

namespace quillon {

namespace {

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

TEST(SelfMetrics, FollowsWhatTheProcessDoes) {
    constexpr long long kBytes = 64LL << 20;
    auto before = Figures();
    const std::vector<char> touched(kBytes, 'x');
    [[maybe_unused]] const char* volatile seen = touched.data();  // a compiler may leave unseen memory out
    const test::TempDir dir;
    std::vector<std::ofstream> files;
    for (int i = 0; i < 20; ++i) files.emplace_back(dir.Native(std::to_string(i)));
    constexpr int kThreads = 20;
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    test::Threads threads(kThreads, [ended](int) { ended.wait(); });
    auto during = Figures();
    end.set_value();
    threads.Join();
    EXPECT_GE(during["ResidentMemory"] - before["ResidentMemory"], kBytes * 9 / 10);
    const std::pair<const char*, long long> untoldUnderEmulation[] = {{"PrivateMemory", kBytes * 9 / 10},
                                                                      {"Handles", 20}};
    for (const auto& [name, growth] : untoldUnderEmulation) {
        if (before.contains(name)) {
            EXPECT_GE(during[name] - before[name], growth) << name;
        }
    }
    // A thread of before, which has been joined, may still be about to leave the process.
    EXPECT_GE(during["Threads"] - before["Threads"], kThreads - 5);
    EXPECT_LE(during["Threads"] - before["Threads"], kThreads);
    EXPECT_GE(during["UserTime"] + during["KernelTime"], before["UserTime"] + before["KernelTime"]);
}

}  // namespace quillon
