#include <benchmark/benchmark.h>

#include <regex>
#include <string>
#include <vector>

#include "simulation/wql/WqlQuery.h"

// Queries of WMI before they are run.
namespace {

const std::wstring& Query() {
    static const std::wstring text =
        L"SELECT Name, ProcessId, CommandLine, WorkingSetSize FROM Win32_Process WHERE (Name LIKE 'svc%' OR "
        L"Name = 'lsass.exe') AND NOT ProcessId < 1000 AND WorkingSetSize >= 1048576 AND CommandLine IS NOT "
        L"NULL";
    return text;
}

/// The words alone, without a look at their order.
void ParseBaseline(benchmark::State& state) {
    static const std::wregex words(LR"(\s*('(?:[^'\\]|\\.)*'|\w+|<>|!=|<=|>=|[-+.*,()=<>]))");
    for (auto _ : state) {
        std::vector<std::wstring> found;
        for (std::wsregex_iterator at(Query().begin(), Query().end(), words), end; at != end; ++at) {
            found.push_back((*at)[1]);
        }
        benchmark::DoNotOptimize(found);
    }
}

void ParseQuillon(benchmark::State& state) {
    for (auto _ : state) {
        quillon::simulation::WqlQuery query;
        benchmark::DoNotOptimize(query.Parse(Query()));
    }
}

BENCHMARK(ParseBaseline)->Name("wql-parse/baseline");
BENCHMARK(ParseQuillon)->Name("wql-parse/quillon");

}  // namespace

BENCHMARK_MAIN();
