#pragma once

#include <cstdint>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// Gives SqlApplicationDataStore one database of the host's SQL engine, from
/// ISqliteInstance::OpenDatabase() until CloseDatabase(); the library never deletes it. The host
/// implements it. One thread at a time uses a database, maybe another one later. Texts are UTF-8 and
/// may hold any byte; every number named `reserved` is 0. An operation that fails logs the reason
/// itself, as the library adds none; an exception reaches the module that called the store.
///
/// Names of tables are given as they are, neither quoted nor escaped. One that begins with "temp." is
/// that of a temporary table, which the store has made by "CREATE TEMP TABLE [temp.NAME] (...)": the
/// operations with a table's name must find it, and it ends with the database at the latest.
class QUILLON_API ISqliteDatabase {
public:
    /// Starts a transaction, or ends it and keeps or undoes its changes. Transactions are not nested:
    /// a second begin and an end without a begin are failures, which are logged.
    virtual void BeginTransaction(std::int32_t reserved) = 0;
    virtual void CommitTransaction(std::int32_t reserved) = 0;
    virtual void RollbackTransaction(std::int32_t reserved) = 0;
    /// Gives back the memory that the engine can spare for this database, as caches.
    virtual void ShrinkMemory() = 0;
    /// Keeps a text under a name, in the database's file and in place of an older one.
    virtual void SetProperty(const std::string& name, const std::string& value) = 0;
    /// Reads that text; leaves `value` alone when there is none or it cannot be read.
    virtual void GetProperty(const std::string& name, std::string& value) = 0;
    /// Inserts all rows or none, each cell into the column of its name, and returns whether they were
    /// inserted; false as well when there is no such table.
    virtual bool AddToTable(const char* tableName, const DataTable& table, std::int32_t reserved) = 0;
    /// Returns whether there is a table of that name; false also when that cannot be found out.
    virtual bool TableExists(const std::string& tableName) = 0;
    /// Deletes the table; one that does not exist is no failure.
    virtual void DropTable(const std::string& tableName) = 0;
    /// Returns the name as text for an SQL statement that can mean this table only, whatever bytes are
    /// in the name. `databaseName` is the name that the database was opened by.
    virtual std::string QuoteTableName(const std::string& databaseName, const std::string& tableName,
                                       std::int32_t reserved) = 0;
    /// Runs one SQL statement to its end and replaces the rows and columns of `result` by its rows. A
    /// statement without rows is no failure. False, and `result` as it was, when it fails.
    virtual bool ExecuteQuery(const std::string& sql, DataTable& result) = 0;

protected:
    ISqliteDatabase() = default;
    ~ISqliteDatabase();
    ISqliteDatabase(const ISqliteDatabase&) = default;
    ISqliteDatabase& operator=(const ISqliteDatabase&) = default;
};

/// Opens and closes the databases of the host's SQL engine. The host implements it and registers it
/// with ServiceLocator before it starts threads; any thread may call it. examples/agent/sql shows an
/// implementation.
class QUILLON_API ISqliteInstance {
public:
    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_ISqliteInstance"; }

    virtual ~ISqliteInstance();

    /// Opens the database of that name, which it makes when there is none, on a connection of its own
    /// for each call. The engine owns what it returns, until CloseDatabase() or its own end. Returns
    /// null, with an Error entry, when the database cannot be opened.
    virtual ISqliteDatabase* OpenDatabase(std::int32_t reserved, const std::string& databaseName) = 0;
    /// Closes a database that OpenDatabase() returned, which must not be used any more. A transaction
    /// that is still open is undone, and temporary tables are deleted.
    virtual void CloseDatabase(ISqliteDatabase* database) = 0;
};

}  // namespace quillon
