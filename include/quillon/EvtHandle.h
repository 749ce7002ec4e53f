#pragma once

#include <utility>

#include "quillon/EventLogProxy.h"

namespace quillon {

/// Owns a handle of the event log: a subscription, query, event, bookmark or context.
class [[nodiscard]] EvtHandle {
public:
    EvtHandle() = default;
    explicit EvtHandle(void* handle) noexcept : m_handle(handle) {}
    ~EvtHandle() { Reset(); }
    EvtHandle(EvtHandle&& other) noexcept : m_handle(other.Release()) {}
    EvtHandle& operator=(EvtHandle&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    EvtHandle(const EvtHandle&) = delete;
    EvtHandle& operator=(const EvtHandle&) = delete;

    [[nodiscard]] void* Get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != nullptr; }
    [[nodiscard]] void* Release() noexcept { return std::exchange(m_handle, nullptr); }
    void Reset(void* handle = nullptr) noexcept {
        if (void* const old = std::exchange(m_handle, handle)) EventLogProxy::EvtClose(old);
    }

private:
    void* m_handle = nullptr;
};

}  // namespace quillon
