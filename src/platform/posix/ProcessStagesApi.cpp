#include "platform/ProcessStagesApi.h"

#include <pthread.h>

#include <cstdlib>

namespace quillon::platform {

void HandleStages(const StageHandlers& handlers) {
    ::pthread_atfork(handlers.beforeFork, handlers.afterFork, handlers.withoutThreads);
    std::atexit(handlers.atEnd);
}

}  // namespace quillon::platform
