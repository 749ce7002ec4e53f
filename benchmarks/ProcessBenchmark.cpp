#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

#include "quillon/ProcessUtils.h"

namespace quillon {

namespace {

/// The content of a small file; 64 KiB at most.
std::string ReadPlainly(const std::string& path) {
    static char buffer[1 << 16];
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    const ssize_t count = ::read(file, buffer, sizeof buffer);
    ::close(file);
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
}

/// All processes with their command lines and memory, as files of /proc.
void ReadProcessFiles(benchmark::State& state) {
    for (auto _ : state) {
        DIR* const folder = ::opendir("/proc");
        std::vector<std::string> contents;
        while (const dirent* entry = ::readdir(folder)) {
            if (std::isdigit(static_cast<unsigned char>(entry->d_name[0])) == 0) continue;
            const std::string path = std::string("/proc/") + entry->d_name;
            contents.push_back(ReadPlainly(path + "/cmdline"));
            std::string memory = ReadPlainly(path + "/smaps_rollup");
            if (memory.empty()) memory = ReadPlainly(path + "/statm");
            contents.push_back(std::move(memory));
        }
        ::closedir(folder);
        benchmark::DoNotOptimize(contents);
    }
}
BENCHMARK(ReadProcessFiles)->Name("processes/baseline")->UseRealTime();

void ListProcesses(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<unsigned long> ids;
        ProcessUtils::EnumerateProcessIds(ids);
        std::string commandLine;
        for (const unsigned long id : ids) {
            ProcessUtils::GetCommandLineForProcess(id, commandLine);
            benchmark::DoNotOptimize(commandLine);
            benchmark::DoNotOptimize(ProcessUtils::GetPrivateWorkingSetForProcess(static_cast<long>(id)));
        }
    }
}
BENCHMARK(ListProcesses)->Name("processes/quillon")->UseRealTime();

}  // namespace

}  // namespace quillon

BENCHMARK_MAIN();
