#include "platform/ProcessStagesApi.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>

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

struct Installed {
    StageHandlers handlers;
    const Installed* earlier;
};

std::atomic<const Installed*>& Latest() {
    static constinit std::atomic<const Installed*> latest{nullptr};
    return latest;
}

/// Runs once for each call of HandleStages(), the latest handlers first. No handler may meet a lock of a
/// thread that is gone, so all of them are made anew before the first one ends its part.
void HandleEnd() {
    const Installed* const latest = Latest();
    if (latest == nullptr) return;
    if (AreThreadsGone()) {
        for (const Installed* each = latest; each != nullptr; each = each->earlier)
            each->handlers.withoutThreads();
    }
    Latest() = latest->earlier;
    latest->handlers.atEnd();
}

}  // namespace

// The system has no fork. Within a library the C runtime calls back when the library leaves the process.
void HandleStages(const StageHandlers& handlers) {
    std::unique_ptr<Installed> added(new (std::nothrow) Installed{handlers, Latest()});
    if (added == nullptr || std::atexit(&HandleEnd) != 0) return;
    while (!Latest().compare_exchange_weak(added->earlier, added.get())) {
    }
    static_cast<void>(added.release());  // it stays as long as the library
}

}  // namespace quillon::platform
