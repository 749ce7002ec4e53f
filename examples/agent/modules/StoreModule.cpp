#include "modules/Modules.h"

#include <chrono>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>

#include "modules/CommandCall.h"
#include "modules/Describe.h"
#include "modules/TableLayout.h"
#include "modules/Waiting.h"
#include "modules/WmiCall.h"
#include "quillon/MethodParameterValidation.h"
#include "quillon/ServiceLocator.h"
#include "quillon/SqlApplicationDataStore.h"
#include "sql/DatabaseFolder.h"
#include "sql/SqliteDatabase.h"

namespace quillon::agent {

namespace {

constexpr long long kNoLimit = std::numeric_limits<long long>::max();
constexpr long long kLongestTimeout = 1000 * kLongestWait;  // milliseconds

using Columns = std::map<std::string, IApplicationDataStore::ColumnDataType>;

/// Where a table goes, and how.
struct Target {
    std::string database, table;
    bool replace = false;
};

IApplicationDataStore::ColumnDataType ColumnType(const Variant& value) {
    if (value.TypeIs(typeid(long long)) || value.TypeIs(typeid(bool))) return IApplicationDataStore::Integer;
    return value.TypeIs(typeid(double)) ? IApplicationDataStore::Real : IApplicationDataStore::Text;
}

/// A column's definition tells its type, or its first value that is not null; without one it holds text.
Columns ColumnsOf(const DataTable& table, const VariantList& definitions) {
    Columns columns;
    const auto add = [&columns](const VariantList& row) {
        for (const Variant& cell : row) {
            if (!cell.IsNull()) columns.emplace(cell.GetName(), ColumnType(cell));
        }
    };
    add(definitions);
    for (const VariantList& row : table) add(row);
    for (const std::string& name : table.GetColumnNames()) columns.emplace(name, IApplicationDataStore::Text);
    return columns;
}

bool WriteRows(const Target& target, DataTable& table, const Columns& columns, SqlApplicationDataStore& store,
               bool& existed) {
    const std::string quoted = store.QuoteTableName(target.table);
    if (target.replace && !store.ExecuteNonQuery("DROP TABLE IF EXISTS " + quoted)) return false;
    store.EnsureTableExists(target.table, columns, {}, existed);
    return store.AddToTable(target.table, table);
}

/// All or nothing; a query without objects, which has not even columns, changes nothing.
bool Write(const Target& target, DataTable& table, const Columns& columns, bool& existed) {
    if (table.GetColumnNames().empty()) return existed = true;
    SqlApplicationDataStore store(target.database);
    if (!store.TryBegin()) return false;
    if (WriteRows(target, table, columns, store, existed) && store.TryCommit()) return true;
    store.RollbackTransaction();
    return false;
}

bool IsUsable(const Target& target, InvocationResult& result) {
    if (!ServiceLocator::Get<DatabaseFolder>()->FileOf(target.database))
        return RefuseParameter("'database' parameter is empty or too long", result);
    if (target.table.empty()) return RefuseParameter("'table' parameter cannot be empty", result);
    if (target.table.starts_with("temp."))
        return RefuseParameter("'table' parameter names a temporary table, which would not last", result);
    return true;
}

/// Puts the result's table into the store and a row about that in its place.
void SaveResult(const Target& target, const VariantList& definitions, InvocationResult& result) {
    DataTable table = std::exchange(result.resultTable, {});
    bool existed = false;
    if (!Write(target, table, ColumnsOf(table, definitions), existed)) {
        Fail(InvocationResult::kSystemFailure,
             "Could not save table '" + target.table + "' in database '" + target.database + '\'', result);
        return;
    }
    VariantList row;
    row.Add("Database", target.database);
    row.Add("Table", target.table);
    row.Add("Rows", static_cast<long long>(table.GetNumberOfRows()));
    row.Add("Created", !existed);
    result.resultTable.AddRow(std::move(row));
}

/// Where the rows come from: a command or a WMI query.
struct Source {
    CommandCall command;
    std::string columns;
    long long skip = 0;
    WmiCall wmi;
    std::string wql;
};

/// The columns of what a command writes, whether there is a line or not.
VariantList DefinitionsOf(const Source& source) {
    if (source.columns.empty())
        return VariantList(Variant(ProcessUtils::ExitCodeColName, 0),
                           Variant(ProcessUtils::LineNumberColName, 0));
    TableLayout layout;
    InvocationResult unused;  // rows have been read by the same text
    layout.Read(source.columns, unused);
    return layout.Definitions();
}

/// Puts the lines of the command into the result's table, but the first ones that are to be left out.
bool FetchLines(const Source& source, InvocationResult& result) {
    if (!MethodParameterValidation::InRange("skip", source.skip, 0, kNoLimit, result) ||
        !RunCommand(source.command, true, result))
        return false;
    DataTable& table = result.resultTable;
    table.SetDefaultColumnNames(table.GetColumnNames());  // they stay though no row is left
    for (long long left = source.skip; left > 0 && !table.Empty(); --left) table.RemoveRow(0);
    return true;
}

/// Puts the rows into the result's table; false when there are none to be had.
bool FetchRows(const Source& source, InvocationResult& result) {
    if (source.command.command.empty() == source.wql.empty())
        return RefuseParameter("Either 'command' or 'wql' must be given", result);
    if (!source.wql.empty())
        return RunWmi(source.wmi, result, [&](WmiConnector& connector) {
            return connector.ExecuteQuery(source.wql, &result.resultTable);
        });
    return source.columns.empty() ? FetchLines(source, result)
                                  : RunCommandTable(source.command, source.columns, source.skip, result);
}

void Save(DescribedBinder& binder, InvocationResult& result) {
    Target target;
    Source source;
    binder.Add("database", target.database);
    binder.Add("table", target.table);
    binder.Add("replace", target.replace);
    AddBindings(binder, source.command);
    binder.Add("columns", source.columns);
    binder.Add("skip", source.skip);
    binder.Add("wql", source.wql);
    AddBindings(binder, source.wmi);
    if (binder.Bind(result) && IsUsable(target, result) && FetchRows(source, result))
        SaveResult(target, source.wql.empty() ? DefinitionsOf(source) : VariantList(), result);
}

bool IsThere(const std::string& database, InvocationResult& result) {
    const auto& folder = *ServiceLocator::Get<DatabaseFolder>();
    const std::string what = "database '" + database + '\'';
    if (!folder.FileOf(database)) return RefuseParameter("There is no " + what, result);
    return folder.Contains(database) || FailAsMissing(InvocationResult::kBadParameter, what, result);
}

void Query(DescribedBinder& binder, InvocationResult& result) {
    std::string database, sql;
    long long maxRows = 0, timeout = 0;
    binder.Add("database", database);
    binder.Add("sql", sql);
    binder.Add("maxRows", maxRows);
    binder.Add("timeout", timeout);
    if (!binder.Bind(result) ||
        !MethodParameterValidation::InRange("maxRows", maxRows, 0, kNoLimit, result) ||
        !MethodParameterValidation::InRange("timeout", timeout, 0, kLongestTimeout, result) ||
        !IsThere(database, result))
        return;
    SqlApplicationDataStore store(database);
    const SqlQuery query{sql, {}, static_cast<std::uint64_t>(maxRows), std::chrono::milliseconds(timeout)};
    if (!store.ExecuteQuery(query, result.resultTable))
        Fail(InvocationResult::kSystemFailure, "The statement failed in database '" + database + '\'',
             result);
}

void Check(DescribedBinder& binder, InvocationResult& result) {
    std::string database;
    binder.Add("database", database);
    if (!binder.Bind(result)) return;
    const auto file = ServiceLocator::Get<DatabaseFolder>()->FileOf(database);
    if (!IsThere(database, result) || !file) return;
    // One that is too damaged to be opened is moved aside, and a new one, which is sound, is opened.
    const std::uint32_t movedBefore = SqliteDatabase::CountMovedAside(*file);
    SqlApplicationDataStore store(database);
    std::vector<std::string> faults;
    if (SqliteDatabase::CountMovedAside(*file) > movedBefore)
        faults.emplace_back("The file could not be opened as a database and was moved aside");
    const bool isSound = store.Check(faults) && faults.empty();
    result.resultTable.SetDefaultColumnNames({"Database", "Fault"});
    for (const std::string& fault : faults)
        result.resultTable.AddRow(VariantList(Variant("Database", database), Variant("Fault", fault)));
    if (!isSound)
        Fail(InvocationResult::kSystemFailure,
             "Database '" + database + (faults.empty() ? "' cannot be read" : "' is damaged"), result);
}

void AddListRow(const std::string& database, Variant&& name, Variant&& rows, DataTable& list) {
    VariantList row(Variant("Database", database));
    row.Add(std::move(name));
    row.Add(std::move(rows));
    list.AddRow(std::move(row));
}

/// A database that cannot be read, and one without tables, has a row with nulls.
void ListTables(const std::string& database, DataTable& list) {
    SqlApplicationDataStore store(database);
    DataTable tables, count;
    store.ExecuteQuery("SELECT name AS \"Table\" FROM sqlite_master WHERE type = 'table' ORDER BY name",
                       tables);
    for (const VariantList& table : tables) {
        const Variant& name = table.Get(0);
        const bool isCounted = store.ExecuteQuery(
            "SELECT count(*) AS \"Rows\" FROM " + store.QuoteTableName(name.GetStringValue()), count);
        AddListRow(database, Variant(name),
                   isCounted ? Variant(count.begin()->Get(0)) : Variant::NullVariant("Rows"), list);
    }
    if (tables.Empty())
        AddListRow(database, Variant::NullVariant("Table"), Variant::NullVariant("Rows"), list);
}

void List(DescribedBinder& binder, InvocationResult& result) {
    if (!binder.Bind(result)) return;
    result.resultTable.SetDefaultColumnNames({"Database", "Table", "Rows"});
    for (const std::string& database : ServiceLocator::Get<DatabaseFolder>()->GetNames())
        ListTables(database, result.resultTable);
}

void AddDatabaseParameter(IMethodMetadataBuilder& builder, const char* note) {
    builder.CreateParameter("database", typeid(std::string))
        .Description("Name of the database; the case of ASCII letters does not matter.")
        .Note(note)
        .BindParameter();
}

void DescribeSave(IMethodMetadataBuilder& builder) {
    builder
        .Description(
            "Keeps what a command line wrote, or the objects of a WQL query, in a table of a database.")
        .Example(
            "quillon-agent run Store.Save database=inventory table=services wql=\"SELECT Name, State FROM "
            "Win32_Service\" replace=true")
        .Example(
            "quillon-agent run Store.Save database=inventory table=mounts command=\"df -Pk\" skip=1 "
            "columns=\"Device Blocks:integer*1024 Used:integer*1024 Free:integer*1024 Use Mount:text:rest\"")
        .Note(
            "The table is made with the columns of the rows when it is not there. Nothing is kept when "
            "a row does not fit into it. A query without objects leaves the table as it is.");
    AddDatabaseParameter(builder, "It is made when it is not there.");
    AddParameter(builder, "table", "Name of the table.");
    AddFlag(builder, "replace", "Puts the rows in the place of the table, instead of adding them to it.");
    DescribeCommand(builder, true);
    AddOptionalParameter(builder, "columns",
                         "The columns, parted by blanks; when empty, a row is kept for every line.");
    DescribeLayout(builder);
    AddOptionalParameter(builder, "wql", "The query, in place of a command.");
    DescribeWmi(builder);
    AddColumn(builder, "Database", typeid(std::string), "As given.");
    AddColumn(builder, "Table", typeid(std::string), "As given.");
    AddColumn(builder, "Rows", typeid(long long), "How many were written.");
    AddColumn(builder, "Created", typeid(bool), "Whether the table was made.");
}

void DescribeQuery(IMethodMetadataBuilder& builder) {
    builder.Flags({IMethodMetadata::MayModifySystemState})
        .Description("Runs one SQL statement in a database and answers with its rows.")
        .Example("quillon-agent run Store.Query database=inventory sql=\"SELECT * FROM mounts\"")
        .HasAdditionalColumns("Those of the statement.");
    AddDatabaseParameter(builder, "It must be there.");
    builder.CreateParameter("sql", typeid(std::string))
        .Description("The statement, in the words of SQLite; only one. It reaches no other file.")
        .BindParameter()
        .CreateParameter("maxRows", typeid(long long))
        .Description("Largest number of rows, of which further ones are left out; 0 for no limit.")
        .OptionalValue(0)
        .BindParameter()
        .CreateParameter("timeout", typeid(long long))
        .Description("Milliseconds after which the statement is stopped and has failed; 0 for no limit.")
        .OptionalValue(0)
        .BindParameter();
}

void DescribeCheck(IMethodMetadataBuilder& builder) {
    builder.Description("Reads a whole database and lists the faults that are found in it.")
        .Note("A database that is sound has no row. One with faults is a failed invocation with code 3.")
        .Example("quillon-agent run Store.Check database=inventory");
    AddDatabaseParameter(builder, "It must be there.");
    AddColumn(builder, "Database", typeid(std::string), "As given.");
    AddColumn(builder, "Fault", typeid(std::string), "What is wrong, in the words of SQLite.");
}

void DescribeList(IMethodMetadataBuilder& builder) {
    builder.Description("Lists the tables of all databases, a row each.")
        .Note("A database without tables, or one that cannot be read, has a row with nulls.")
        .Example("quillon-agent run Store.List");
    AddColumn(builder, "Database", typeid(std::string), "In lower case.");
    AddColumn(builder, "Table", typeid(std::string), "Name of the table.");
    AddColumn(builder, "Rows", typeid(long long), "How many it has; null when that cannot be read.");
}

}  // namespace

std::unique_ptr<IModule> MakeStoreModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Store.Save", IMethodMetadata::V5_0, &DescribeSave, &Save));
    methods.push_back(MakeMethod("Store.Query", IMethodMetadata::V5_0, &DescribeQuery, &Query));
    methods.push_back(MakeMethod("Store.Check", IMethodMetadata::V5_0, &DescribeCheck, &Check));
    methods.push_back(MakeMethod("Store.List", IMethodMetadata::V5_0, &DescribeList, &List));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
