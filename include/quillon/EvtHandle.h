#pragma once

#include <utility>

#include "quillon/EventLogProxy.h"

namespace quillon {

/// Owns a handle of the event log (a subscription, query, event, bookmark or render context) and
/// closes it by EventLogProxy::EvtClose(). It can be moved and not copied. One thread at a time uses
/// an object; nothing is logged or thrown.
class [[nodiscard]] EvtHandle {
public:
    EvtHandle() = default;
    /// Takes the handle over; null is no handle.
    explicit EvtHandle(void* handle) noexcept : m_handle(handle) {}
    ~EvtHandle() { Reset(); }
    /// Take the other's handle and leave it none; the assignment closes its own one first.
    EvtHandle(EvtHandle&& other) noexcept : m_handle(other.Release()) {}
    EvtHandle& operator=(EvtHandle&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    EvtHandle(const EvtHandle&) = delete;
    EvtHandle& operator=(const EvtHandle&) = delete;

    /// Returns the handle, which stays owned; null when there is none.
    [[nodiscard]] void* Get() const noexcept { return m_handle; }
    /// Returns whether there is a handle.
    explicit operator bool() const noexcept { return m_handle != nullptr; }
    /// Hands the handle to the caller, who closes it.
    [[nodiscard]] void* Release() noexcept { return std::exchange(m_handle, nullptr); }
    /// Takes over another handle, or none, and closes the one before.
    void Reset(void* handle = nullptr) noexcept {
        if (void* const old = std::exchange(m_handle, handle)) EventLogProxy::EvtClose(old);
    }

private:
    void* m_handle = nullptr;
};

}  // namespace quillon
