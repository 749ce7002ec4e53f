#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/VariantList.h"

namespace quillon {

class ISqliteDatabase;

/// Holds one SQL statement, the values of its parameters and its limits. The text is UTF-8.
struct SqlQuery {
    std::string sql;
    /// The values: of the parameters "?" in their order, of a parameter such as ":name" the value of that
    /// name. Their number is that of the parameters.
    VariantList parameters{};
    std::uint64_t maxRows = 0;             ///< further rows are not read; 0 for no limit
    std::chrono::milliseconds timeout{0};  ///< then the statement fails; 0 for no limit
};

/// Takes one row, which it may move from, on the thread of the query; false ends the query, which is
/// no failure.
using SqlRowVisitor = std::function<bool(VariantList& row)>;

/// Runs statements with parameters and limits on the databases of the host's SQL engine. A host whose
/// engine can do so implements it and registers it beside ISqliteInstance; without it
/// SqlApplicationDataStore refuses such queries and does everything else.
class QUILLON_API ISqliteQueries {
public:
    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_ISqliteQueries"; }

    virtual ~ISqliteQueries();

    /// Runs one SQL statement on a database that ISqliteInstance::OpenDatabase() returned. Sets
    /// `columns` to the names of its columns and then hands its rows to `visitor`, one by one. Returns
    /// false, with an Error entry, when the statement cannot be run, fails, reaches its time limit, or
    /// the host shuts down meanwhile; the rows before were handed out. What the visitor throws ends the
    /// query and reaches the caller.
    virtual bool Query(ISqliteDatabase& database, const SqlQuery& query, std::vector<std::string>& columns,
                       const SqlRowVisitor& visitor) = 0;
};

}  // namespace quillon
