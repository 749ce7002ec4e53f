#pragma once

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "quillon/DataTableIO.h"
#include "quillon/SqlApplicationDataStore.h"
#include "sql/SqliteEngine.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"

namespace quillon::test {

using Store = SqlApplicationDataStore;
using V = Variant;

/// Databases of this test alone, which wait hardly at all for each other unless told otherwise.
struct Databases {
    explicit Databases(const std::string& path, int busyMilliseconds = 20)
        : folder(path), engine(std::in_place, folder, busyMilliseconds) {
        ServiceLocator::Put<ISqliteInstance>(&*engine);
        ServiceLocator::Put<ISqliteQueries>(&*engine);
    }
    ~Databases() {
        ServiceLocator::Remove<ISqliteInstance>();
        ServiceLocator::Remove<ISqliteQueries>();
    }

    agent::DatabaseFolder folder;
    std::optional<agent::SqliteEngine> engine;
};

class StoreTest : public TempDirTest {
protected:
    RecordingLogger m_log;
    Databases m_databases{dir.Path("stores")};

    std::vector<std::string> TakeErrors() {
        auto errors = m_log.Lines(ICLogger::Level::Error);
        m_log.Forget();
        return errors;
    }
};

inline DataTable Query(Store& store, const std::string& sql) {
    DataTable table;
    EXPECT_TRUE(store.ExecuteQuery(sql, table)) << sql.substr(0, 100);
    return table;
}

inline std::string Csv(Store& store, const std::string& sql) {
    std::string text = ToCsv(Query(store, sql));
    std::erase(text, '\r');
    return text;
}

inline DataTable Column(const std::string& name, const std::vector<Variant>& values) {
    DataTable table;
    for (Variant value : values) {
        value.SetName(name);
        table.AddRow(VariantList(value));
    }
    return table;
}

}  // namespace quillon::test
