#include "quillon/SelfMetrics.h"

#include <cstdint>
#include <optional>
#include <string>
#include <typeinfo>
#include <utility>

#include "base/OwnFigures.h"
#include "platform/ProcessFactsApi.h"

namespace quillon {

namespace {

constexpr const char* kBytes = "bytes";
constexpr const char* kMilliseconds = "ms";
constexpr const char* kCount = "count";

void AddFigure(DataTable& table, const std::string& name, std::optional<long long> value, const char* unit) {
    VariantList row;
    row.Add("Name", name);
    if (value) {
        row.Add("Value", *value);
    } else {
        row.AddEmptyCell("Value", typeid(long long));
    }
    row.Add("Unit", unit);
    table.AddRow(std::move(row));
}

void AddLogFigures(DataTable& table) {
    const base::LogFigures& log = base::TheLogFigures();
    const auto add = [&table](const char* name, std::uint64_t value, const char* unit) {
        AddFigure(table, name, static_cast<long long>(value), unit);
    };
    add("DroppedConsoleLines", log.droppedConsoleLines, kCount);
    add("LogBytes", log.bytes, kBytes);
    add("RefusedLogRollOvers", log.refusedRollOvers, kCount);
    const std::uint32_t lastError = log.lastError;
    AddFigure(table, "LastLogError", lastError == 0 ? std::nullopt : std::optional<long long>(lastError),
              "code");
}

}  // namespace

DataTable SelfMetrics() {
    DataTable table;
    table.AddStringCol("Name");
    table.AddLongLongCol("Value");
    table.AddStringCol("Unit");
    const platform::OwnUsage usage = platform::UsageOfThisProcess();
    AddFigure(table, "ResidentMemory", usage.residentBytes, kBytes);
    AddFigure(table, "PrivateMemory", usage.privateBytes, kBytes);
    AddFigure(table, "UserTime", usage.userMilliseconds, kMilliseconds);
    AddFigure(table, "KernelTime", usage.kernelMilliseconds, kMilliseconds);
    AddFigure(table, "Threads", usage.threads, kCount);
    AddFigure(table, "Handles", usage.handles, kCount);
    AddFigure(table, "DroppedLogLines", static_cast<long long>(base::DroppedLogLines()), kCount);
    AddLogFigures(table);
    AddFigure(table, "LookupsUnderWay", base::LookupsUnderWay(), kCount);
    AddFigure(table, "WmiCallsLeftBehind", base::WmiCallsLeft(), kCount);
    for (const base::CacheSize& cache : base::CacheSizes()) {
        AddFigure(table, "Cache." + cache.name, static_cast<long long>(cache.entries), kCount);
    }
    return table;
}

}  // namespace quillon
