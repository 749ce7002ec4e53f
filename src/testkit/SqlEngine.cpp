#include "quillon/testkit/SqlEngine.h"

#include "quillon/ServiceLocator.h"
#include "sql/DatabaseFolder.h"
#include "sql/SqliteEngine.h"

namespace quillon::testkit {

struct SqlEngine::State {
    template <class... Arguments>
    explicit State(Arguments&&... arguments) : engine(std::forward<Arguments>(arguments)...) {
        ServiceLocator::Put<ISqliteInstance>(&engine);
        ServiceLocator::Put<ISqliteQueries>(&engine);
    }
    ~State() {
        if (ServiceLocator::Get<ISqliteInstance>(true) == &engine) ServiceLocator::Remove<ISqliteInstance>();
        if (ServiceLocator::Get<ISqliteQueries>(true) == &engine) ServiceLocator::Remove<ISqliteQueries>();
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    agent::SqliteEngine engine;
};

SqlEngine::SqlEngine() : m_state(std::make_unique<State>(agent::SqliteEngine::InMemory())) {}

SqlEngine::SqlEngine(const std::string& directory)
    : m_state(std::make_unique<State>(agent::DatabaseFolder(directory))) {}

SqlEngine::~SqlEngine() = default;

}  // namespace quillon::testkit
