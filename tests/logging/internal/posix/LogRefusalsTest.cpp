#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <utility>

#include "base/OwnFigures.h"
#include "logging/LogOutput.h"
#include "support/LogLines.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/posix/RefusedCalls.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

constexpr int kEntries = 60;

/// A program that logs, in a new directory, with some roll-overs and a report of two lines in each new file.
class Program {
public:
    void Run(const RefusedCalls& refused) {
        LogOutput output([&] { Report(output); }, {}, {1'000, 50});
        // Without memory its caller is told that there is no log.
        const bool isOpenedFirst = refused.call == RefusedCalls::Memory;
        if (isOpenedFirst) output.OpenFile(m_path);
        TheRefusedCalls() = refused;
        if (!isOpenedFirst) output.OpenFile(m_path);
        for (int n = 0; n < kEntries; ++n) Write(output, n);
        m_refused = std::exchange(TheRefusedCalls(), {}).refused;
    }
    /// Every line stands in a file once, in the order of writing, or is counted as lost.
    void Check() const {
        std::vector<int> found[2];  // entries, and lines of reports
        for (int number = 50; number >= 0; --number) {
            const std::string name = number > 0 ? "new/log." + std::to_string(number) : "new/log";
            if (!m_dir.Exists(name)) continue;
            for (const std::string& line : LinesOf(m_dir.Read(name))) {
                if (!line.ends_with(kEnd)) continue;  // torn, or what the file says about itself
                const std::size_t kind = line.find(" entry ");
                const std::size_t report = line.find(" report ");
                if (kind != std::string::npos) found[0].push_back(std::stoi(line.substr(kind + 7)));
                if (report != std::string::npos) found[1].push_back(std::stoi(line.substr(report + 8)));
            }
        }
        for (const std::vector<int>& lines : found) {
            EXPECT_TRUE(std::is_sorted(lines.begin(), lines.end()));
            EXPECT_EQ(std::adjacent_find(lines.begin(), lines.end()), lines.end()) << "written twice";
        }
        EXPECT_EQ(found[0].size() + found[1].size() + base::DroppedLogLines() - m_lostBefore,
                  kEntries + m_reports);
    }
    int Refused() const { return m_refused; }

private:
    static constexpr const char* kEnd = " whole";

    void Write(LogOutput& output, int n) {
        constexpr int kEachSecond = 4;
        Put(output, "entry", n, 1'000 + n / kEachSecond);
    }

    void Report(LogOutput& output) {
        for (int line = 0; line < 2; ++line) Put(output, "report", static_cast<int>(m_reports++), 1'000);
    }

    /// The text needs no memory of its own.
    static void Put(LogOutput& output, const char* kind, int number, int second) {
        std::array<char, 64> text{};
        const int length = std::snprintf(text.data(), text.size(), " %s %d%32s", kind, number, kEnd);
        output.Write({std::chrono::system_clock::time_point(std::chrono::seconds(second)),
                      "1",
                      "INFO",
                      {text.data(), static_cast<std::size_t>(length)}});
    }

    const TempDir m_dir;
    const std::string m_path = m_dir.Path("new/log");
    const std::uint64_t m_lostBefore = base::DroppedLogLines();
    std::size_t m_reports = 0;
    int m_refused = 0;
};

struct Kind {
    const char* name;
    RefusedCalls::Call call;
};

class LogRefusals : public testing::TestWithParam<Kind> {};

}  // namespace

TEST_P(LogRefusals, EachLineIsInAFileOrCounted) {
    constexpr int kMost = 200, kEver = 1'000'000;
    if (kSanitized && GetParam().call == RefusedCalls::Memory) GTEST_SKIP() << "memory is the sanitizer's";
    int runs = 0;
    for (const int count : {1, 3, 40, kEver}) {
        for (int before = 0; before < kMost;
             before += count == 1 ? QUILLON_TEST_SLOWDOWN : 23 * QUILLON_TEST_SLOWDOWN) {
            SCOPED_TRACE("after " + std::to_string(before) + ": " + std::to_string(count));
            Program program;
            program.Run({GetParam().call, before, count});
            program.Check();
            if (HasFailure()) return;
            if (program.Refused() == 0) break;  // the program makes no more calls
            ++runs;
        }
    }
    EXPECT_GT(runs, 2) << "hardly any call was refused";
}

INSTANTIATE_TEST_SUITE_P(
    Calls, LogRefusals,
    testing::Values(Kind{"Open", RefusedCalls::Open}, Kind{"Write", RefusedCalls::Write},
                    Kind{"ShortWrite", RefusedCalls::ShortWrite}, Kind{"Rename", RefusedCalls::Rename},
                    Kind{"Stat", RefusedCalls::Stat}, Kind{"MakeDirectory", RefusedCalls::MakeDirectory},
                    Kind{"Control", RefusedCalls::Control}, Kind{"Memory", RefusedCalls::Memory}),
    [](const auto& kind) { return std::string(kind.param.name); });

}  // namespace quillon::test
