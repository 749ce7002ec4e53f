#pragma once

namespace quillon::platform {

/// What must happen to the locks of a part of the library when its threads vanish. All four run on the
/// thread that forks or ends the process.
struct StageHandlers {
    void (*beforeFork)();      ///< takes the locks
    void (*afterFork)();       ///< gives them back, in the parent
    void (*withoutThreads)();  ///< makes them anew: in the child of a fork, or at an end that killed the
                               ///< threads
    void (*atEnd)();           ///< the process ends while its other threads run
};

/// Installs the handlers for the rest of the process's life. At the end they run before the destructors of
/// static objects that are made already. Thread-safe; each call adds handlers.
void HandleStages(const StageHandlers& handlers);

}  // namespace quillon::platform
