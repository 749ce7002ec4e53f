#pragma once

#include <memory>
#include <string>

namespace quillon::testkit {

/// Is a host's SQL engine over SQLite, registered with ServiceLocator as ISqliteInstance and
/// ISqliteQueries for its life, so that SqlApplicationDataStore works as in the reference agent. Stores
/// end before it. Thread-safe, but for its beginning and end.
///
/// @code
/// testkit::SqlEngine engine;
/// SqlApplicationDataStore store("Inventory");
/// @endcode
class SqlEngine {
public:
    /// Keeps the databases in memory, each until the engine ends, also while no store has it open.
    SqlEngine();
    /// Keeps each database in a file of a directory (a library path, UTF-8), which is made with the first
    /// one; the files stay.
    explicit SqlEngine(const std::string& directory);
    ~SqlEngine();
    SqlEngine(const SqlEngine&) = delete;
    SqlEngine& operator=(const SqlEngine&) = delete;

private:
    struct State;
    const std::unique_ptr<State> m_state;
};

}  // namespace quillon::testkit
