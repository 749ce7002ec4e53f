#include "platform/ProcessStagesApi.h"

#include <atomic>
#include <cstdlib>

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// Tells whether the process ends, and its other threads are gone, from whether the library is unloaded or
/// the program's own exit() runs.
bool AreThreadsGone() {
    using Answer = BOOLEAN(NTAPI*)();
    static const auto isEnding = reinterpret_cast<Answer>(reinterpret_cast<void (*)()>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));
    return isEnding != nullptr && isEnding() != 0;
}

std::atomic<const StageHandlers*>& Installed() {
    static constinit std::atomic<const StageHandlers*> installed{nullptr};
    return installed;
}

void HandleEnd() {
    const StageHandlers* const handlers = Installed();
    if (AreThreadsGone()) handlers->withoutThreads();
    handlers->atEnd();
}

}  // namespace

// The system has no fork. Within a library the C runtime calls back when the library leaves the process.
void HandleStages(const StageHandlers& handlers) {
    Installed() = new StageHandlers(handlers);
    std::atexit(&HandleEnd);
}

}  // namespace quillon::platform
