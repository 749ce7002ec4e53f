#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/SqlApplicationDataStore.h"
#include "quillon/StdoutLogger.h"
#include "sql/SqliteEngine.h"

/// 100,000 rows of six columns into a temporary table and back, beside SQLite's own
/// calls with one prepared statement and a vector of structs; and what many small
/// temporary tables leave in memory.

namespace {

using namespace quillon;

constexpr int kRows = 100'000;
constexpr int kGrowthCycles = 100'000;
constexpr const char* kSelect = "SELECT * FROM [temp.files]";

struct File {
    std::string name, path;  // 12 and 40 bytes
    long long size = 0, count = 0;
    double ratio = 0;
    long long hidden = 0;
};

const std::vector<File>& Files() {
    static const std::vector<File> files = [] {
        std::vector<File> made;
        for (int i = 0; i < kRows; ++i) {
            const std::string number = std::to_string(10'000'000 + i);
            made.push_back({"file" + number, "C:\\Program Files\\Vendor\\Tool\\bin" + number, i * 4096LL, i,
                            i / 7.0, i % 3});
        }
        return made;
    }();
    return files;
}

DataTable MakeTable() {
    DataTable table;
    for (const File& file : Files()) {
        VariantList row;
        row.Reserve(6);
        row.Add("Name", file.name);
        row.Add("Path", file.path);
        row.Add("Size", file.size);
        row.Add("Count", file.count);
        row.Add("Ratio", file.ratio);
        row.Add("Hidden", file.hidden);
        table.AddRow(std::move(row));
    }
    return table;
}

/// An engine over a folder of its own; quiet.
class Databases {
public:
    Databases() : m_path(FileSystemUtils::GetTemporaryDirectory()), m_folder(m_path) {
        m_logger.SetLevel(ICLogger::Level::Error);
        ServiceLocator::Put<ICLogger>(&m_logger);
        m_engine.emplace(m_folder);
        ServiceLocator::Put<ISqliteInstance>(&*m_engine);
    }
    ~Databases() {
        ServiceLocator::Clear();
        m_engine.reset();
        FileSystemUtils::EraseDirectory(m_path);
    }
    Databases(const Databases&) = delete;
    Databases& operator=(const Databases&) = delete;

    std::string FileOf(const std::string& name) const {
        return quillon::PathUtils::ToSystemPath(*m_folder.FileOf(name));
    }

private:
    StdoutLogger m_logger;
    const std::string m_path;
    const agent::DatabaseFolder m_folder;
    std::optional<agent::SqliteEngine> m_engine;
};

/// SQLite's own calls; a failure ends the program.
class Plain {
public:
    explicit Plain(const std::string& file) {
        Check(sqlite3_open(file.c_str(), &m_handle));
        Run("PRAGMA journal_mode=WAL");
        Run("PRAGMA synchronous=FULL");
    }
    ~Plain() { sqlite3_close(m_handle); }
    Plain(const Plain&) = delete;
    Plain& operator=(const Plain&) = delete;

    static void Check(int code) {
        if (code != SQLITE_OK) std::abort();
    }
    void Run(const char* sql) { Check(sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr)); }

    void Write() {
        Run("CREATE TEMP TABLE [temp.files] (Name TEXT, Path TEXT, Size INTEGER, Count INTEGER, Ratio FLOAT, "
            "Hidden INTEGER)");
        Run("BEGIN");
        sqlite3_stmt* insert = nullptr;
        Check(sqlite3_prepare_v2(m_handle, "INSERT INTO [temp.files] VALUES (?,?,?,?,?,?)", -1, &insert,
                                 nullptr));
        for (const File& file : Files()) {
            sqlite3_bind_text(insert, 1, file.name.data(), static_cast<int>(file.name.size()), SQLITE_STATIC);
            sqlite3_bind_text(insert, 2, file.path.data(), static_cast<int>(file.path.size()), SQLITE_STATIC);
            sqlite3_bind_int64(insert, 3, file.size);
            sqlite3_bind_int64(insert, 4, file.count);
            sqlite3_bind_double(insert, 5, file.ratio);
            sqlite3_bind_int64(insert, 6, file.hidden);
            sqlite3_step(insert);
            Check(sqlite3_reset(insert));
        }
        sqlite3_finalize(insert);
        Run("COMMIT");
    }

    std::vector<File> Read() {
        sqlite3_stmt* query = nullptr;
        Check(sqlite3_prepare_v2(m_handle, kSelect, -1, &query, nullptr));
        std::vector<File> files;
        const auto text = [query](int column) {
            return std::string(reinterpret_cast<const char*>(sqlite3_column_text(query, column)),
                               static_cast<std::size_t>(sqlite3_column_bytes(query, column)));
        };
        while (sqlite3_step(query) == SQLITE_ROW) {
            files.push_back({text(0), text(1), sqlite3_column_int64(query, 2), sqlite3_column_int64(query, 3),
                             sqlite3_column_double(query, 4), sqlite3_column_int64(query, 5)});
        }
        Check(sqlite3_finalize(query));
        return files;
    }

private:
    sqlite3* m_handle = nullptr;
};

void InsertPlainly(benchmark::State& state) {
    const Databases databases;
    Plain plain(databases.FileOf("plain"));
    Files();
    for (auto _ : state) {
        plain.Write();
        plain.Run("DROP TABLE [temp.files]");
    }
}

void InsertTable(benchmark::State& state) {
    const Databases databases;
    SqlApplicationDataStore store("store");
    const DataTable table = MakeTable();
    for (auto _ : state) {
        if (!store.WriteDataToTempTable("files", table)) std::abort();
        store.DeleteTempTable("files");
    }
}

/// The larger request makes the allocator do now what it puts off when small blocks are freed.
template <class T>
void FreeUntimed(benchmark::State& state, T& value) {
    state.PauseTiming();
    value = {};
    std::free(std::malloc(4096));
    state.ResumeTiming();
}

void ReadPlainly(benchmark::State& state) {
    const Databases databases;
    Plain plain(databases.FileOf("plain"));
    plain.Write();
    for (auto _ : state) {
        std::vector<File> files = plain.Read();
        if (files.size() != kRows) std::abort();
        FreeUntimed(state, files);
    }
}

void ReadTable(benchmark::State& state) {
    const Databases databases;
    SqlApplicationDataStore store("store");
    store.WriteDataToTempTable("files", MakeTable());
    for (auto _ : state) {
        DataTable table;
        if (!store.ExecuteQuery(kSelect, table) || table.GetNumberOfRows() != kRows) std::abort();
        FreeUntimed(state, table);
    }
    store.DeleteTempTable("files");
}

double ResidentKiB() {
    std::ifstream file("/proc/self/statm");
    double pages = 0;
    file >> pages >> pages;
    return pages * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1024;
}

void Grow(benchmark::State& state) {
    const Databases databases;
    SqlApplicationDataStore store("store");
    const DataTable small(VariantList(Variant("Name", "a"), Variant("Size", 1)),
                          VariantList(Variant("Name", "b"), Variant("Size", 2)));
    double early = 0;
    for (auto _ : state) {
        for (int i = 0; i < kGrowthCycles; ++i) {
            DataTable read;
            if (!store.WriteDataToTempTable("t", small) ||
                !store.ExecuteQuery("SELECT * FROM [temp.t]", read))
                std::abort();
            store.DeleteTempTable("t");
            if (i == 1000) early = ResidentKiB();
        }
    }
    state.counters["early_KiB"] = early;
    state.counters["end_KiB"] = ResidentKiB();
}

// First, as the resident memory must not hold the rows of the others.
BENCHMARK(Grow)->Name("store-growth/quillon")->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(InsertPlainly)->Name("store-insert/baseline")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(InsertTable)->Name("store-insert/quillon")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadPlainly)->Name("store-read/baseline")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadTable)->Name("store-read/quillon")->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
