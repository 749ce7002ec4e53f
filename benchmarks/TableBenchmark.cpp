#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <map>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "quillon/DataTable.h"

/// A table of rows of six named cells beside the plain std::vector of std::map
/// that a module might use instead. Bytes a cell are what was asked of the heap.

namespace {

std::atomic<std::size_t> g_requested{0};

}  // namespace

// Not inlined: the compiler would take malloc and delete for a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
    g_requested.fetch_add(size, std::memory_order_relaxed);
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace quillon {
namespace {

using PlainRow = std::map<std::string, std::string>;
using PlainTable = std::vector<PlainRow>;

constexpr int kRows = 100'000;
constexpr int kCells = 6;
const std::string kNames[kCells] = {"Name", "Path", "Size", "Count", "Ratio", "Hidden"};

/// The values of a row, made beforehand for both.
struct Source {
    std::string name, path;  // 12 and 40 bytes
    long long size, count;
    double ratio;
    bool hidden;
};

const std::vector<Source>& Sources() {
    static const std::vector<Source> sources = [] {
        std::vector<Source> made;
        for (int i = 0; i < kRows; ++i) {
            const std::string number = std::to_string(10'000'000 + i);
            made.push_back({"file" + number, "C:\\Program Files\\Vendor\\Tool\\bin" + number, i * 4096LL, i,
                            i / 7.0, i % 3 == 0});
        }
        return made;
    }();
    return sources;
}

PlainTable BuildPlain() {
    PlainTable table;
    for (const Source& source : Sources()) {
        PlainRow row;
        row.emplace(kNames[0], source.name);
        row.emplace(kNames[1], source.path);
        row.emplace(kNames[2], std::to_string(source.size));
        row.emplace(kNames[3], std::to_string(source.count));
        row.emplace(kNames[4], std::to_string(source.ratio));
        row.emplace(kNames[5], source.hidden ? "true" : "false");
        table.push_back(std::move(row));
    }
    return table;
}

DataTable BuildQuillon() {
    DataTable table;
    for (const Source& source : Sources()) {
        VariantList row;
        row.Reserve(kCells);
        row.Add(kNames[0], source.name);
        row.Add(kNames[1], source.path);
        row.Add(kNames[2], source.size);
        row.Add(kNames[3], source.count);
        row.Add(kNames[4], source.ratio);
        row.Add(kNames[5], source.hidden);
        table.AddRow(std::move(row));
    }
    return table;
}

const PlainTable& Plain() {
    static const PlainTable table = BuildPlain();
    return table;
}

const DataTable& Quillon() {
    static const DataTable table = BuildQuillon();
    return table;
}

/// Builds tables one after the other; freeing them is not measured.
template <class Build>
void RunBuild(benchmark::State& state, Build build) {
    Sources();
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::size_t before = g_requested.load();
        auto table = build();
        bytes = g_requested.load() - before;
        state.PauseTiming();
        { const auto freed = std::move(table); }
        state.ResumeTiming();
    }
    state.counters["bytes_per_cell"] = static_cast<double>(bytes) / (kRows * kCells);
}

void BuildBaseline(benchmark::State& state) { RunBuild(state, BuildPlain); }
void BuildOurs(benchmark::State& state) { RunBuild(state, BuildQuillon); }
void CopyBaseline(benchmark::State& state) {
    RunBuild(state, [] { return PlainTable(Plain()); });
}
void CopyOurs(benchmark::State& state) {
    RunBuild(state, [] { return DataTable(Quillon()); });
}

/// Adds up the four typed columns; the plain table has to read numbers from its texts.
void ScanBaseline(benchmark::State& state) {
    for (auto _ : state) {
        double sum = 0;
        for (const PlainRow& row : Plain()) {
            const long long whole = std::stoll(row.at(kNames[2])) + std::stoll(row.at(kNames[3]));
            sum += static_cast<double>(whole) + std::stod(row.at(kNames[4]));
            sum += row.at(kNames[5]) == "true" ? 1 : 0;
        }
        benchmark::DoNotOptimize(sum);
    }
}

void ScanOurs(benchmark::State& state) {
    for (auto _ : state) {
        double sum = 0;
        for (const VariantList& row : Quillon()) {
            const long long whole = row[kNames[2]].GetLongLongValue() + row[kNames[3]].GetLongLongValue();
            sum += static_cast<double>(whole) + row[kNames[4]].GetDoubleValue();
            sum += row[kNames[5]].GetBoolValue() ? 1 : 0;
        }
        benchmark::DoNotOptimize(sum);
    }
}

/// One text column, where the plain table has nothing to convert.
void ScanTextBaseline(benchmark::State& state) {
    for (auto _ : state) {
        std::size_t length = 0;
        for (const PlainRow& row : Plain()) length += row.at(kNames[1]).size();
        benchmark::DoNotOptimize(length);
    }
}

void ScanTextOurs(benchmark::State& state) {
    for (auto _ : state) {
        std::size_t length = 0;
        for (const VariantList& row : Quillon()) length += row[kNames[1]].GetStringValue().size();
        benchmark::DoNotOptimize(length);
    }
}

void CompareBaseline(benchmark::State& state) {
    const PlainTable other = Plain();
    for (auto _ : state) benchmark::DoNotOptimize(Plain() == other);
}

void CompareOurs(benchmark::State& state) {
    const DataTable other = Quillon();
    for (auto _ : state) benchmark::DoNotOptimize(Quillon() == other);
}

using PlainCells = std::vector<std::pair<std::string, std::string>>;

/// Names and values of a row of `count` cells, in an order that the seed decides.
PlainCells ShuffledCells(std::int64_t count, unsigned seed) {
    PlainCells cells;
    for (std::int64_t i = 0; i < count; ++i) {
        cells.emplace_back("Column" + std::to_string(i), "value " + std::to_string(i * 31));
    }
    std::shuffle(cells.begin(), cells.end(), std::mt19937(seed));
    return cells;
}

void SimilarBaseline(benchmark::State& state) {
    const PlainCells left = ShuffledCells(state.range(0), 1), right = ShuffledCells(state.range(0), 2);
    for (auto _ : state) {
        PlainCells sortedLeft = left, sortedRight = right;
        std::sort(sortedLeft.begin(), sortedLeft.end());
        std::sort(sortedRight.begin(), sortedRight.end());
        benchmark::DoNotOptimize(sortedLeft == sortedRight);
    }
}

void SimilarOurs(benchmark::State& state) {
    VariantList left, right;
    for (const auto& [name, value] : ShuffledCells(state.range(0), 1)) left.Add(name, value);
    for (const auto& [name, value] : ShuffledCells(state.range(0), 2)) right.Add(name, value);
    for (auto _ : state) benchmark::DoNotOptimize(left.Similar(right));
}

BENCHMARK(BuildBaseline)->Name("table-build/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(BuildOurs)->Name("table-build/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(CopyBaseline)->Name("table-copy/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(CopyOurs)->Name("table-copy/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanBaseline)->Name("table-scan/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanOurs)->Name("table-scan/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanTextBaseline)->Name("table-scan-text/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanTextOurs)->Name("table-scan-text/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(CompareBaseline)->Name("table-compare/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(CompareOurs)->Name("table-compare/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(SimilarBaseline)->Name("row-similar/baseline")->Arg(6)->Arg(100)->Arg(1000);
BENCHMARK(SimilarOurs)->Name("row-similar/quillon")->Arg(6)->Arg(100)->Arg(1000);

}  // namespace
}  // namespace quillon

BENCHMARK_MAIN();
