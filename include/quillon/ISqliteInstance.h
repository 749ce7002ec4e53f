#pragma once

#include <cstdint>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// One database of the host's SQL engine, open until the engine closes it. Used by
/// one thread at a time. A failure is logged by the engine. Numbers named `reserved`
/// are 0. Texts are UTF-8.
class QUILLON_API ISqliteDatabase {
public:
    virtual void BeginTransaction(std::int32_t reserved) = 0;
    virtual void CommitTransaction(std::int32_t reserved) = 0;
    virtual void RollbackTransaction(std::int32_t reserved) = 0;
    virtual void ShrinkMemory() = 0;
    virtual void SetProperty(const std::string& name, const std::string& value) = 0;
    /// Leaves `value` alone when there is no such property.
    virtual void GetProperty(const std::string& name, std::string& value) = 0;
    /// Inserts all rows or none.
    virtual bool AddToTable(const char* tableName, const DataTable& table, std::int32_t reserved) = 0;
    virtual bool TableExists(const std::string& tableName) = 0;
    virtual void DropTable(const std::string& tableName) = 0;
    virtual std::string QuoteTableName(const std::string& databaseName, const std::string& tableName,
                                       std::int32_t reserved) = 0;
    virtual bool ExecuteQuery(const std::string& sql, DataTable& result) = 0;

protected:
    ISqliteDatabase() = default;
    ~ISqliteDatabase();
    ISqliteDatabase(const ISqliteDatabase&) = default;
    ISqliteDatabase& operator=(const ISqliteDatabase&) = default;
};

/// The host's SQL engine. Any thread.
class QUILLON_API ISqliteInstance {
public:
    static const char* __InterfaceId() { return "VntItf_ISqliteInstance"; }

    virtual ~ISqliteInstance();

    /// The engine's own; null, with an Error entry, when it cannot be opened.
    virtual ISqliteDatabase* OpenDatabase(std::int32_t reserved, const std::string& databaseName) = 0;
    virtual void CloseDatabase(ISqliteDatabase* database) = 0;
};

}  // namespace quillon
