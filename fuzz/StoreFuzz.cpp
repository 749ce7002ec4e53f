#include <fuzzer/FuzzedDataProvider.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Require.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/SqlApplicationDataStore.h"
#include "quillon/StdoutLogger.h"
#include "sql/SqliteEngine.h"

// The input is a table of any names and values. Written into a temporary and into a
// permanent table of SQLite, it is refused or reads back with the same values, though
// their kinds may be those of the columns; and properties read back as they are.
namespace {

using namespace quillon;

/// One database for the whole run; nothing of it is to last.
struct Database {
    Database() : path(FileSystemUtils::GetTemporaryDirectory()), engine(agent::DatabaseFolder(path)) {
        logger.SetLevel(ICLogger::Level::Fatal);
        ServiceLocator::Put<ICLogger>(&logger);
        ServiceLocator::Put<ISqliteInstance>(&engine);
        store = std::make_unique<SqlApplicationDataStore>("fuzz");
        Require(store->ExecuteNonQuery("PRAGMA synchronous=OFF"));
    }
    ~Database() {
        store.reset();
        ServiceLocator::Clear();
        FileSystemUtils::EraseDirectory(path);
    }

    StdoutLogger logger;
    std::string path;
    agent::SqliteEngine engine;
    std::unique_ptr<SqlApplicationDataStore> store;
};

Variant TakeValue(FuzzedDataProvider& input, const std::string& name) {
    static const double special[] = {std::nan(""), std::numeric_limits<double>::infinity(), 0.1, -0.0, 9e18};
    switch (input.ConsumeIntegralInRange(0, 8)) {
        case 0:
            return Variant(name, input.ConsumeIntegral<long long>());
        case 1:
            return Variant(name, input.ConsumeBool());
        case 2:
            return Variant(name, input.ConsumeFloatingPoint<double>());
        case 3:
            return Variant(name, input.PickValueInArray(special));
        case 4:
            return Variant(name, TimePoint(TimePoint::duration(input.ConsumeIntegral<int>())));
        case 5:
            return Variant(name, std::to_string(input.ConsumeFloatingPointInRange(-1e6, 1e6)));
        case 6:
            return Variant(name, std::to_string(input.ConsumeIntegral<long long>()));
        case 7:
            return Variant(name, input.ConsumeRandomLengthString(20));
        default:
            return Variant::NullVariant(name);
    }
}

DataTable TakeTable(FuzzedDataProvider& input, const std::vector<std::string>& names) {
    DataTable table;
    table.SetDefaultColumnNames(names);
    const int rows = input.ConsumeIntegralInRange(0, 6);
    for (int i = 0; i < rows; ++i) {
        VariantList row;
        for (const std::string& name : names) {
            if (input.ConsumeIntegralInRange(0, 9) != 0) row.Add(TakeValue(input, name));
        }
        table.AddRow(std::move(row));
    }
    return table;
}

bool SaysReal(const Variant& read, double value) {
    if (const auto integer = read.TryGet<long long>()) return static_cast<double>(*integer) == value;
    if (const auto real = read.TryGet<double>()) return *real == value;
    const std::string& text = read.GetStringValue();
    double parsed = 0;
    return std::from_chars(text.data(), text.data() + text.size(), parsed).ec == std::errc() &&
           parsed == value;
}

bool SaysInteger(const Variant& read, long long value) {
    if (const auto integer = read.TryGet<long long>()) return *integer == value;
    if (const auto text = read.TryGet<std::string>()) return *text == std::to_string(value);
    return std::abs(value) <= (1LL << 53) && *read.TryGet<double>() == static_cast<double>(value);
}

bool SaysText(const Variant& read, const std::string& value) {
    if (const auto text = read.TryGet<std::string>()) return *text == value;
    if (const auto integer = read.TryGet<long long>()) return std::to_string(*integer) == value;
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof(buffer), *read.TryGet<double>()).ptr;
    return std::string(buffer, end) == value || SaysInteger(read, std::atoll(value.c_str()));
}

bool SaysTheSame(const Variant* written, const Variant& read) {
    const bool isNan = written != nullptr && std::isnan(written->TryGet<double>().value_or(0));
    if (written == nullptr || written->IsNull() || isNan) return read.IsNull();
    if (read.IsNull()) return false;
    if (const auto real = written->TryGet<double>()) return SaysReal(read, *real);
    return written->SqlType() == 1 ? SaysInteger(read, written->GetLongLongValue())
                                   : SaysText(read, written->GetStringValue());
}

void RequireTable(SqlApplicationDataStore& store, const std::string& sql, const DataTable& written) {
    DataTable read;
    Require(store.ExecuteQuery(sql, read) && read.GetNumberOfRows() == written.GetNumberOfRows());
    auto row = read.begin();
    for (const VariantList& expected : written) {
        for (const Variant& cell : *row) Require(SaysTheSame(expected.Find(cell.GetName()), cell));
        Require(row->Size() >= expected.Size());
        ++row;
    }
}

void CheckPermanent(SqlApplicationDataStore& store, const std::string& name, DataTable& table,
                    FuzzedDataProvider& input) {
    std::map<std::string, IApplicationDataStore::ColumnDataType> columns;
    for (const std::string& column : table.GetColumnNames())
        columns[column] = input.PickValueInArray(
            {IApplicationDataStore::Integer, IApplicationDataStore::Real, IApplicationDataStore::Text});
    bool existed = false;
    store.EnsureTableExists(name, columns, {}, existed);
    Require(!existed || name.starts_with("quillon") || name.starts_with("sqlite"));
    const std::string quoted = store.QuoteTableName(name);
    if (!existed && store.AddToTable(name, table)) RequireTable(store, "SELECT * FROM " + quoted, table);
    if (!existed) store.ExecuteNonQuery("DROP TABLE IF EXISTS " + quoted);
}

void CheckProperty(SqlApplicationDataStore& store, const std::string& name, const std::string& value) {
    std::string read;
    store.SetDatabaseProperty(name, value);
    store.GetDatabaseProperty(name, read);
    Require(read == value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Database database;
    SqlApplicationDataStore& store = *database.store;
    FuzzedDataProvider input(data, size);
    const std::string name = input.ConsumeRandomLengthString(12);
    std::vector<std::string> columns;
    for (int left = input.ConsumeIntegralInRange(1, 5); left > 0; --left)
        columns.push_back(input.ConsumeRandomLengthString(8));
    DataTable table = TakeTable(input, columns);
    if (store.WriteDataToTempTable(name, table))
        RequireTable(store, "SELECT * FROM [temp." + name + ']', table);
    store.DeleteTempTable(name);
    CheckPermanent(store, name, table, input);
    CheckProperty(store, name, input.ConsumeRandomLengthString(20));
    return 0;
}
