#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "content/ContentList.h"
#include "host/Host.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "system/Sha256.h"

/// A download of 3,000 small files beside a plain copy of them, and the memory that a large list takes.

namespace {

using namespace quillon;
namespace fs = std::filesystem;

constexpr int kFiles = 3'000;
constexpr int kEntries = 600'000;

/// A new directory, removed with all that is in it.
class Place {
public:
    Place() : m_path(FileSystemUtils::GetTemporaryDirectory()) {}
    ~Place() { FileSystemUtils::EraseDirectory(m_path); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    std::string Path(const std::string& name) const { return m_path + '\\' + name; }
    fs::path Native(const std::string& name) const { return PathUtils::ToSystemPath(Path(name)); }

private:
    const std::string m_path;
};

std::string Line(const std::string& name, const std::string& content) {
    agent::Sha256 hash;
    hash.Add(content.data(), content.size());
    return '"' + name + "\" ln=" + std::to_string(content.size()) + " dt=1 CRC=" + hash.Finish() + '\n';
}

/// Files of 4 KiB in the directory "source", and their list.
void MakePackage(const Place& place) {
    fs::create_directory(place.Native("source"));
    std::ofstream list(place.Native("list"), std::ios::binary);
    for (int i = 0; i < kFiles; ++i) {
        const std::string name = std::to_string(i), content = name + std::string(4096 - name.size(), 'x');
        std::ofstream(place.Native("source") / name, std::ios::binary) << content;
        list << Line(name, content);
    }
    list << "; List Complete - 1\n";
}

void CopyPlainly(benchmark::State& state) {
    const Place place;
    MakePackage(place);
    for (auto _ : state) {
        fs::create_directory(place.Native("to"));
        for (int i = 0; i < kFiles; ++i) {
            const std::string name = std::to_string(i);
            fs::copy_file(place.Native("source") / name, place.Native("to") / name);
        }
        state.PauseTiming();
        fs::remove_all(place.Native("to"));
        state.ResumeTiming();
    }
}
BENCHMARK(CopyPlainly)->Name("download-3000/baseline")->Unit(benchmark::kMillisecond)->UseRealTime();

void Download(benchmark::State& state) {
    const Place place;
    MakePackage(place);
    agent::AgentSettings settings;
    settings.wayfarEnabled = true;
    const agent::Host host({"", ICLogger::Level::Fatal}, place.Path("stores"),
                           agent::AgentConfiguration(settings));
    const auto url = [&](const std::string& name) { return "file://" + place.Native(name).string(); };
    for (auto _ : state) {
        const InvocationResult result =
            host.Run("Content.Download",
                     {"listUrl=" + url("list"), "folderUrl=" + url("source"), "folder=" + place.Path("to")});
        if (result.resultCode != 0) state.SkipWithError(result.errorMessage.c_str());
        state.PauseTiming();
        fs::remove_all(place.Native("to"));
        state.ResumeTiming();
    }
}
BENCHMARK(Download)->Name("download-3000/quillon")->Unit(benchmark::kMillisecond)->UseRealTime();

/// Of this process, in bytes; "VmRSS" is what it has now, "VmHWM" the most that it had.
double Memory(const std::string& label) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(label + ':')) return 1024 * std::stod(line.substr(label.size() + 1));
    }
    return 0;
}

void ReadLargeList(benchmark::State& state) {
    const Place place;
    {
        std::ofstream list(place.Native("list"), std::ios::binary);
        for (int i = 0; i < kEntries; ++i)
            list << '"' << i << "\" ln=4096 dt=1 CRC=" << std::string(64, 'a') << '\n';
        list << "; List Complete - 1\n";
    }
    const auto size = static_cast<double>(fs::file_size(place.Native("list")));
    for (auto _ : state) {
        std::ofstream("/proc/self/clear_refs") << 5;  // the most starts anew
        const double before = Memory("VmRSS");
        std::vector<agent::ContentItem> items;
        InvocationResult result;
        agent::ReadContentList(place.Path("list"), "list", items, result);
        if (items.size() != kEntries) state.SkipWithError("the list was not read");
        state.counters["memory_per_size"] = (Memory("VmHWM") - before) / size;
    }
}
BENCHMARK(ReadLargeList)->Name("list-600000/quillon")->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
