#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "TableRows.h"
#include "data/RowRegions.h"

/// A table of rows of six named cells beside the plain std::vector of std::map, and the std::vector of
/// rows of std::variant, that a module might use instead. Bytes a cell are what the heap gave.

namespace quillon {
namespace {

using PlainRow = std::map<std::string, std::string>;
using PlainTable = std::vector<PlainRow>;

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

const PlainTable& Plain() {
    static const PlainTable table = BuildPlain();
    return table;
}

/// What is taken from the heap now, and what tables have from the system beside it.
std::size_t Given() {
    const auto heap = ::mallinfo2();
    return heap.uordblks + heap.hblkhd + TakenRegionSlots() * kRegionSlot;
}

/// Builds tables one after the other; freeing them is not measured.
template <class Build>
void RunBuild(benchmark::State& state, Build build, double cells = kRows * kCells) {
    Variants();  // what copies read, and the sources, are made before
    Quillon();
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::size_t before = Given();
        auto table = build();
        bytes = Given() - before;
        state.PauseTiming();
        { const auto freed = std::move(table); }
        state.ResumeTiming();
    }
    state.counters["bytes_per_cell"] = static_cast<double>(bytes) / cells;
}

void BuildBaseline(benchmark::State& state) { RunBuild(state, BuildPlain); }
void BuildPeer(benchmark::State& state) { RunBuild(state, BuildVariants); }
void BuildOurs(benchmark::State& state) { RunBuild(state, BuildQuillon); }
void CopyBaseline(benchmark::State& state) {
    RunBuild(state, [] { return PlainTable(Plain()); });
}
void CopyPeer(benchmark::State& state) {
    RunBuild(state, [] { return VariantTable(Variants()); });
}
void CopyOurs(benchmark::State& state) {
    RunBuild(state, [] { return DataTable(Quillon()); });
}

/// The memory of a cell in rows of other shapes: how many cells, and what their names begin with.
struct Shape {
    int cells;
    const char* prefix;
};

std::vector<std::string> NamesOf(const Shape& shape) {
    std::vector<std::string> names;
    for (int i = 0; i < shape.cells; ++i) names.push_back(shape.prefix + std::to_string(i));
    return names;
}

void ShapeBaseline(benchmark::State& state, const Shape& shape) {
    const auto build = [names = NamesOf(shape)] {
        std::vector<VariantRow> table;
        for (long long i = 0; i < kRows; ++i) {
            VariantRow& row = table.emplace_back();
            row.reserve(names.size());
            for (const std::string& name : names) row.emplace_back(name, i);
        }
        return table;
    };
    RunBuild(state, build, 1.0 * kRows * shape.cells);
}

void ShapeOurs(benchmark::State& state, const Shape& shape) {
    const auto build = [names = NamesOf(shape)] {
        DataTable table;
        for (long long i = 0; i < kRows; ++i) {
            VariantList row;
            for (const std::string& name : names) row.Add(name, i);
            table.AddRow(std::move(row));
        }
        return table;
    };
    RunBuild(state, build, 1.0 * kRows * shape.cells);
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

const VariantCell& Cell(const VariantRow& row, const std::string& name) {
    const auto hasName = [&](const auto& cell) { return cell.first == name; };
    return std::find_if(row.begin(), row.end(), hasName)->second;
}

void ScanPeer(benchmark::State& state) {
    for (auto _ : state) {
        double sum = 0;
        for (const VariantRow& row : Variants()) {
            const long long whole =
                std::get<long long>(Cell(row, kNames[2])) + std::get<long long>(Cell(row, kNames[3]));
            sum += static_cast<double>(whole) + std::get<double>(Cell(row, kNames[4]));
            sum += std::get<bool>(Cell(row, kNames[5])) ? 1 : 0;
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

void ScanTextPeer(benchmark::State& state) {
    for (auto _ : state) {
        std::size_t length = 0;
        for (const VariantRow& row : Variants()) length += std::get<std::string>(Cell(row, kNames[1])).size();
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

void ComparePeer(benchmark::State& state) {
    const VariantTable other = Variants();
    for (auto _ : state) benchmark::DoNotOptimize(Variants() == other);
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

/// The same with the pairs in a table of hashes that holds pointers.
void SimilarPeer(benchmark::State& state) {
    const PlainCells left = ShuffledCells(state.range(0), 1), right = ShuffledCells(state.range(0), 2);
    for (auto _ : state) {
        std::unordered_map<std::string_view, const std::string*> values;
        for (const auto& [name, value] : right) values.emplace(name, &value);
        const bool similar = std::all_of(left.begin(), left.end(), [&](const auto& cell) {
            const auto found = values.find(cell.first);
            return found != values.end() && *found->second == cell.second;
        });
        benchmark::DoNotOptimize(similar);
    }
}

void SimilarOurs(benchmark::State& state) {
    VariantList left, right;
    for (const auto& [name, value] : ShuffledCells(state.range(0), 1)) left.Add(name, value);
    for (const auto& [name, value] : ShuffledCells(state.range(0), 2)) right.Add(name, value);
    for (auto _ : state) benchmark::DoNotOptimize(left.Similar(right));
}

BENCHMARK(BuildBaseline)->Name("table-build/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(BuildPeer)->Name("table-build/variants")->Unit(benchmark::kMillisecond);
BENCHMARK(BuildOurs)->Name("table-build/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeBaseline, , Shape{1, "Column"})
    ->Name("table-1-integer/baseline")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeOurs, , Shape{1, "Column"})
    ->Name("table-1-integer/quillon")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeBaseline, , Shape{3, "Column"})
    ->Name("table-3-integers/baseline")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeOurs, , Shape{3, "Column"})
    ->Name("table-3-integers/quillon")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeBaseline, , Shape{10, "Column"})
    ->Name("table-10-integers/baseline")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeOurs, , Shape{10, "Column"})
    ->Name("table-10-integers/quillon")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeBaseline, , Shape{6, "ANameOfTwentyCharac"})
    ->Name("table-long-names/baseline")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeOurs, , Shape{6, "ANameOfTwentyCharac"})
    ->Name("table-long-names/quillon")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeBaseline, , Shape{6, "a-name-with-dashes-"})
    ->Name("table-dashed-names/baseline")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ShapeOurs, , Shape{6, "a-name-with-dashes-"})
    ->Name("table-dashed-names/quillon")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(CopyBaseline)->Name("table-copy/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(CopyPeer)->Name("table-copy/variants")->Unit(benchmark::kMillisecond);
BENCHMARK(CopyOurs)->Name("table-copy/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanBaseline)->Name("table-scan/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanPeer)->Name("table-scan/variants")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanOurs)->Name("table-scan/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanTextBaseline)->Name("table-scan-text/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanTextPeer)->Name("table-scan-text/variants")->Unit(benchmark::kMillisecond);
BENCHMARK(ScanTextOurs)->Name("table-scan-text/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(CompareBaseline)->Name("table-compare/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ComparePeer)->Name("table-compare/variants")->Unit(benchmark::kMillisecond);
BENCHMARK(CompareOurs)->Name("table-compare/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(SimilarBaseline)->Name("row-similar/baseline")->Arg(6)->Arg(100)->Arg(1000);
BENCHMARK(SimilarPeer)->Name("row-similar/hashed")->Arg(6)->Arg(100)->Arg(1000);
BENCHMARK(SimilarOurs)->Name("row-similar/quillon")->Arg(6)->Arg(100)->Arg(1000);

}  // namespace
}  // namespace quillon

BENCHMARK_MAIN();
