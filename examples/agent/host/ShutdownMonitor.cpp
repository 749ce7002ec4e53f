#include "host/ShutdownMonitor.h"

#include <mutex>
#include <utility>

#include "host/ShutdownCallbacks.h"
#include "system/Console.h"

namespace quillon::agent {

namespace {

void WatchInterrupts(InterruptHandler handler) {
    static std::once_flag isWatching;
    std::call_once(isWatching, [handler] {
        AfterInterrupt([] { ShutdownCallbacks::Instance().CallAll(); });
        OnInterrupt(handler);
    });
}

}  // namespace

ShutdownMonitor::ShutdownMonitor() { WatchInterrupts(&ShutdownMonitor::HandleInterrupt); }

void ShutdownMonitor::RequestShutdown() {
    Requested() = true;
    ShutdownCallbacks::Instance().CallAll();
}

bool ShutdownMonitor::IsShutdownRequested() {
    const Cancellation* const invocation = InvocationScope::Current();
    return Requested() || (invocation != nullptr && invocation->IsCancelled());
}

std::uint64_t ShutdownMonitor::OnShutdown(std::function<void()> callback) {
    ShutdownCallbacks& callbacks = ShutdownCallbacks::Instance();
    const Cancellation* const invocation = InvocationScope::Current();
    const std::uint64_t registration = callbacks.Add(std::move(callback), invocation);
    // What happened before Add() has called nobody.
    if (Requested()) callbacks.CallAll();
    if (invocation != nullptr && invocation->IsCancelled()) callbacks.Call(*invocation);
    return registration;
}

void ShutdownMonitor::ForgetCallback(std::uint64_t registration) {
    ShutdownCallbacks::Instance().Remove(registration);
}

/// Initialised by the compiler, so that a signal handler meets no guard here.
std::atomic<bool>& ShutdownMonitor::Requested() {
    static constinit std::atomic<bool> requested = false;
    static_assert(std::atomic<bool>::is_always_lock_free);
    return requested;
}

bool ShutdownMonitor::HandleInterrupt() {
    const bool isFirst = !Requested().exchange(true);
    return isFirst;
}

}  // namespace quillon::agent
