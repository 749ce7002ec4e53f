#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>

#include "system/posix/Descriptor.h"

namespace quillon::agent {

/// Ends waits for a descriptor, once and for all.
class StopEvent {
public:
    StopEvent();

    /// False, with errno, when there is no descriptor for it.
    bool IsMade() const { return static_cast<bool>(m_event); }
    void Set();
    /// Waits until the descriptor can be read; false when the event is set. A wait that the system refuses,
    /// which has no memory for it, begins again: whoever serves must not end for it.
    bool AwaitInput(int descriptor) const;
    /// Waits, and returns the bytes that came: 0 at the end or when the event is set, and -1, with errno, on
    /// failure.
    ssize_t Read(int descriptor, char* bytes, std::size_t size) const;

private:
    std::atomic<bool> m_isSet{false};
    Descriptor m_event;
};

}  // namespace quillon::agent
