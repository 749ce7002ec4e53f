#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "quillon/EventLogProxy.h"
#include "quillon/StdoutLogger.h"
#include "quillon/StringUtils.h"
#include "simulation/eventlog/EventLog.h"

namespace {

using quillon::EventLogProxy;
using quillon::StringUtils;
using quillon::simulation::EventLog;

constexpr int kPairs = 100'000;
const std::array<std::wstring, 4> kChannels{L"Maker-Windows-Part/Operational", L"Maker-Windows-Other/Debug",
                                            L"Maker-Windows-Fourth/Admin", L"Maker-Windows-Third/Analytic"};

/// Does the least that a proxy needs: one count for each name, and a lock.
class PlainCounts {
public:
    void Add(const std::wstring& name) {
        const std::lock_guard lock(m_mutex);
        ++m_counts[StringUtils::ToUppercase(StringUtils::WideStringToNarrow(name))];
    }
    void Remove(const std::wstring& name) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_counts.find(StringUtils::ToUppercase(StringUtils::WideStringToNarrow(name)));
        if (found != m_counts.end() && --found->second == 0) m_counts.erase(found);
    }

private:
    std::mutex m_mutex;
    std::map<std::string, std::uint32_t> m_counts;
};

void Baseline(benchmark::State& state) {
    PlainCounts counts;
    for (auto _ : state) {
        for (int n = 0; n < kPairs; ++n) {
            const std::wstring& channel = kChannels[static_cast<std::size_t>(n) % kChannels.size()];
            counts.Add(channel);
            counts.Remove(channel);
        }
    }
}
BENCHMARK(Baseline)->Name("enable-disable-100000/baseline")->Unit(benchmark::kMillisecond);

/// With a holder of each channel besides, a pair only counts; without, it switches the
/// (simulated) channel on and off, with two opened configurations and two log entries that go nowhere.
void Proxy(benchmark::State& state, bool isHeld) {
    quillon::StdoutLogger logger;
    EventLogProxy::Initialize(logger);
    for (const std::wstring& channel : kChannels) {
        EventLog::Machine().AddChannel(StringUtils::WideStringToNarrow(channel), false);
        if (isHeld && !EventLogProxy::EnableChannelIfRequired(channel.c_str()))
            state.SkipWithError("no event log");
    }
    for (auto _ : state) {
        for (int n = 0; n < kPairs; ++n) {
            const wchar_t* const channel = kChannels[static_cast<std::size_t>(n) % kChannels.size()].c_str();
            benchmark::DoNotOptimize(EventLogProxy::EnableChannelIfRequired(channel));
            EventLogProxy::DisableChannelIfRequired(channel);
        }
    }
    for (const std::wstring& channel : kChannels) EventLogProxy::DisableChannelIfRequired(channel.c_str());
}
BENCHMARK_CAPTURE(Proxy, held, true)
    ->Name("enable-disable-100000/quillon-held")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Proxy, switched, false)
    ->Name("enable-disable-100000/quillon-switched")
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
