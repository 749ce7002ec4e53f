#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "platform/Wbem.h"
#include "providers/WmiOwners.h"
#include "quillon/WmiConnector.h"
#include "simulation/wmi/WmiRepository.h"

namespace {

using quillon::DataTable;
using quillon::WmiConnector;
using quillon::platform::CComPtr;
using quillon::simulation::WmiRepository;

constexpr int kObjects = 10'000;
constexpr const char* kNamespace = "ROOT\\benchmark";
constexpr const char* kAll = "SELECT * FROM Process";

_variant_t Number(LONG value) {
    _variant_t number;
    number.vt = VT_I4;
    number.lVal = value;
    return number;
}

/// Objects of six properties, such as processes have, behind the calls of the seam.
WmiRepository& Repository() {
    static WmiRepository& repository = *[] {
        auto* const made = new WmiRepository;
        made->AddClass(L"ROOT\\benchmark", {L"Process",
                                            {{L"Name", CIM_STRING, {}},
                                             {L"ProcessId", CIM_UINT32, {}},
                                             {L"ParentProcessId", CIM_UINT32, {}},
                                             {L"WorkingSetSize", CIM_UINT64, {}},
                                             {L"CommandLine", CIM_STRING, {}},
                                             {L"IsSystem", CIM_BOOLEAN, {}}},
                                            {L"ProcessId"}});
        for (int i = 0; i < kObjects; ++i) {
            made->AddInstance(L"ROOT\\benchmark", L"Process",
                              {{L"Name", L"service.exe"},
                               {L"ProcessId", Number(i)},
                               {L"ParentProcessId", Number(i / 10)},
                               {L"WorkingSetSize", std::to_wstring(i * 4096LL).c_str()},
                               {L"CommandLine", L"/usr/sbin/service --instance 17 --quiet"},
                               {L"IsSystem", _variant_t(i % 2 == 0)}});
        }
        made->AddClass(L"ROOT\\benchmark", {L"Disk", {{L"Name", CIM_STRING, {}}}, {L"Name"}});
        for (const wchar_t* const name : {L"C:", L"D:", L"Z:"}) {
            made->AddInstance(L"ROOT\\benchmark", L"Disk", {{L"Name", name}});
        }
        quillon::platform::ReplaceWbemCalls(made->Calls());
        return made;
    }();
    return repository;
}

/// Reads these objects by code written for them only.
struct Process {
    std::wstring name, commandLine;
    long long id = 0, parent = 0, workingSet = 0;
    bool isSystem = false;
};

std::wstring ReadText(IWbemClassObject& object, const wchar_t* name) {
    _variant_t value;
    object.Get(name, 0, &value, nullptr, nullptr);
    return value.vt == VT_BSTR ? std::wstring(value.bstrVal, ::SysStringLen(value.bstrVal)) : std::wstring();
}

long long ReadNumber(IWbemClassObject& object, const wchar_t* name) {
    _variant_t value;
    object.Get(name, 0, &value, nullptr, nullptr);
    return value.vt == VT_I4 ? value.lVal : value.boolVal;
}

Process ReadProcess(IWbemClassObject& object) {
    return {ReadText(object, L"Name"),
            ReadText(object, L"CommandLine"),
            ReadNumber(object, L"ProcessId"),
            ReadNumber(object, L"ParentProcessId"),
            std::stoll(ReadText(object, L"WorkingSetSize")),
            ReadNumber(object, L"IsSystem") != 0};
}

void QueryByHand(benchmark::State& state) {
    CComPtr<IWbemLocator> locator;
    CComPtr<IWbemServices> services;
    Repository().CreateLocator(locator);
    const auto path = quillon::ToBstr(L"ROOT\\benchmark"), language = quillon::ToBstr(L"WQL"),
               query = quillon::ToBstr(L"SELECT * FROM Process");
    locator->ConnectServer(path.get(), nullptr, nullptr, nullptr, 0, nullptr, nullptr, &services);
    for (auto _ : state) {
        std::vector<Process> processes;
        CComPtr<IEnumWbemClassObject> objects;
        services->ExecQuery(language.get(), query.get(),
                            WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, &objects);
        std::array<IWbemClassObject*, 100> batch{};
        ULONG count = 0;
        do {
            objects->Next(WBEM_INFINITE, batch.size(), batch.data(), &count);
            for (ULONG i = 0; i < count; ++i) {
                CComPtr<IWbemClassObject> object;
                object.Attach(batch[i]);
                processes.push_back(ReadProcess(*object));
            }
        } while (count == batch.size());
        benchmark::DoNotOptimize(processes);
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}

void QueryToTable(benchmark::State& state) {
    Repository();
    WmiConnector connector(nullptr);
    connector.Connect(kNamespace);
    DataTable table;
    for (auto _ : state) {
        connector.ExecuteQuery(kAll, &table);
        benchmark::DoNotOptimize(table);
    }
    if (table.GetNumberOfRows() != kObjects) state.SkipWithError("rows are missing");
    state.SetItemsProcessed(state.iterations() * kObjects);
}

void QueryToVisitor(benchmark::State& state) {
    Repository();
    WmiConnector connector(nullptr);
    connector.Connect(kNamespace);
    for (auto _ : state) {
        connector.ExecuteQuery(kAll, [](const quillon::VariantList& row) {
            benchmark::DoNotOptimize(&row);
            return true;
        });
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}

double ResidentKibibytes() {
    std::ifstream file("/proc/self/statm");
    long long total = 0, resident = 0;
    file >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1024;
}

/// Whether memory grows with queries: after the first thousand, and at the end.
void QueryRepeatedly(benchmark::State& state) {
    constexpr int kFirst = 1000, kQueries = 100'000;
    Repository();
    WmiConnector connector(nullptr);
    connector.Connect(kNamespace);
    DataTable table;
    double early = 0;
    for (auto _ : state) {
        for (int i = 0; i < kQueries; ++i) {
            if (!connector.ExecuteQuery("SELECT * FROM Disk", &table) || table.GetNumberOfRows() != 3) {
                state.SkipWithError("rows are missing");
            }
            if (i == kFirst) early = ResidentKibibytes();
        }
    }
    state.counters["early_KiB"] = early;
    state.counters["end_KiB"] = ResidentKibibytes();
}

BENCHMARK(QueryByHand)->Name("wmi-query/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(QueryToTable)->Name("wmi-query/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(QueryToVisitor)->Name("wmi-query/quillon-visitor")->Unit(benchmark::kMillisecond);
BENCHMARK(QueryRepeatedly)
    ->Name("wmi-growth/quillon")
    ->Unit(benchmark::kSecond)
    ->Iterations(1)
    ->Repetitions(1);

}  // namespace

BENCHMARK_MAIN();
