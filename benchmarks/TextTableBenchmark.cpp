#include <benchmark/benchmark.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "quillon/TextToDataTableParser.h"

namespace {

using quillon::NullSeparatedField;
using quillon::SpaceSeparatedField;

constexpr int kLines = 200'000;

/// Returns lines as "ps aux" prints them, with numbers that differ from line to line.
const std::string& ProcessList() {
    static const std::string text = [] {
        std::string lines;
        for (int i = 0; i < kLines; ++i) {
            const std::string number = std::to_string(1000 + i);
            lines += "www-data    " + number + "  0.3  1.2 " + number + "8 9" + number +
                     " ?        Ssl  May01   0:07 /usr/sbin/service --instance " + number + " --quiet\n";
        }
        return lines;
    }();
    return text;
}

struct Process {
    std::string user;
    long long id = 0;
    std::string cpu, memory;
    long long virtualSize = 0, residentSize = 0;
    std::string terminal, state, start, time, command;
};

void ParseByStream(benchmark::State& state) {
    for (auto _ : state) {
        std::istringstream text(ProcessList());
        std::vector<Process> processes;
        for (std::string line; std::getline(text, line);) {
            std::istringstream fields(line);
            Process p;
            fields >> p.user >> p.id >> p.cpu >> p.memory >> p.virtualSize >> p.residentSize >> p.terminal >>
                p.state >> p.start >> p.time >> std::ws;
            std::getline(fields, p.command);
            p.virtualSize *= 1024;
            p.residentSize *= 1024;
            processes.push_back(std::move(p));
        }
        benchmark::DoNotOptimize(processes);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(ProcessList().size()));
}

void ParseToTable(benchmark::State& state) {
    quillon::TextToDataTableParser parser;
    parser.AddField<std::string>("USER", new SpaceSeparatedField, 0);
    parser.AddField<long long>("PID", new SpaceSeparatedField, 0);
    for (const char* name : {"%CPU", "%MEM"}) parser.AddField<std::string>(name, new SpaceSeparatedField, 0);
    for (const char* name : {"VSZ", "RSS"}) parser.AddField<long long>(name, new SpaceSeparatedField, 1024);
    for (const char* name : {"TTY", "STAT", "START", "TIME"}) {
        parser.AddField<std::string>(name, new SpaceSeparatedField, 0);
    }
    parser.AddField<std::string>("COMMAND", new NullSeparatedField, 0);
    for (auto _ : state) {
        quillon::DataTable table;
        parser.Parse(ProcessList(), table);
        benchmark::DoNotOptimize(table);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(ProcessList().size()));
}

BENCHMARK(ParseByStream)->Name("process-list/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ParseToTable)->Name("process-list/quillon")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
