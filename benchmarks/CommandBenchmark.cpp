#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "providers/CommandOutput.h"
#include "quillon/ProcessUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StdoutLogger.h"

namespace quillon {

namespace {

constexpr char kShortCommand[] = "/bin/true";
constexpr char kLongCommand[] = "seq 1000000";

std::shared_ptr<ProcessUtils::CmdProperties> Run(const char* command, bool asLines, ICLogger& logger) {
    auto props = std::make_shared<ProcessUtils::CmdProperties>();
    props->command = command;
    props->logger = &logger;
    props->captureOutput = true;
    props->outputAsLines = asLines;
    ProcessUtils::RunCliCommand(props);
    return props;
}

std::string ReadAll(int file) {
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0;
         (count = ::pread(file, buffer, sizeof buffer, static_cast<off_t>(text.size()))) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

void RunBare(benchmark::State& state) {
    for (auto _ : state) {
        char path[] = "/tmp/bareXXXXXX";
        const int file = ::mkostemp(path, O_CLOEXEC);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, file, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, file, STDERR_FILENO);
        char* arguments[] = {const_cast<char*>(kShortCommand), nullptr};
        pid_t child = 0;
        if (::posix_spawn(&child, kShortCommand, &actions, nullptr, arguments, environ) != 0) std::abort();
        ::posix_spawn_file_actions_destroy(&actions);
        int status = 0;
        ::waitpid(child, &status, 0);
        benchmark::DoNotOptimize(ReadAll(file));
        ::close(file);
        ::unlink(path);
    }
}
BENCHMARK(RunBare)->Name("run/baseline")->UseRealTime();

void RunCommandLine(benchmark::State& state) {
    StdoutLogger logger;
    ServiceLocator::Put<ICLogger>(&logger);
    for (auto _ : state) benchmark::DoNotOptimize(Run(kShortCommand, false, logger));
    ServiceLocator::Clear();
}
BENCHMARK(RunCommandLine)->Name("run/quillon")->UseRealTime();

void LinesFromPipe(benchmark::State& state) {
    for (auto _ : state) {
        std::FILE* pipe = ::popen(kLongCommand, "r");
        std::vector<std::string> lines;
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) lines.emplace_back(buffer);
        ::pclose(pipe);
        benchmark::DoNotOptimize(lines);
    }
}
BENCHMARK(LinesFromPipe)->Name("million-lines/baseline")->UseRealTime()->Unit(benchmark::kMillisecond);

void LinesFromCommand(benchmark::State& state) {
    StdoutLogger logger;
    ServiceLocator::Put<ICLogger>(&logger);
    for (auto _ : state) benchmark::DoNotOptimize(Run(kLongCommand, true, logger));
    ServiceLocator::Clear();
}
BENCHMARK(LinesFromCommand)->Name("million-lines/quillon")->UseRealTime()->Unit(benchmark::kMillisecond);

/// The share of cutting the lines and of making and freeing the table.
void LinesToTable(benchmark::State& state) {
    std::string text;
    for (int i = 1; i <= 1'000'000; ++i) text += std::to_string(i) + '\n';
    for (auto _ : state) {
        DataTable table;
        AddOutputRows(text, 0, true, table);
        benchmark::DoNotOptimize(table);
    }
}
BENCHMARK(LinesToTable)->Name("million-lines/table-alone")->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace quillon

BENCHMARK_MAIN();
