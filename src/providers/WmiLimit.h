#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/Wbem.h"

namespace quillon {

class IShutdownMonitor;

/// How long one operation of a connector may take: until its deadline, and until the host shuts down.
class WmiLimit {
public:
    using Clock = std::chrono::steady_clock;

    /// The deadline counts from here, in milliseconds; 0 and less is none.
    explicit WmiLimit(std::int32_t deadline);

    /// Returns whether anything can end the operation early.
    bool Exists() const { return m_end.has_value() || m_monitor != nullptr; }
    bool HasDeadline() const { return m_end.has_value(); }
    /// Returns S_OK, 0x800705B4 (ERROR_TIMEOUT) or 0x800704C7 (ERROR_CANCELLED).
    HRESULT Look() const;
    /// Returns when to look again at the latest.
    Clock::time_point NextLook() const;
    /// Returns the milliseconds that are left, at most `most`.
    std::int32_t Left(std::int32_t most) const;

private:
    std::optional<Clock::time_point> m_end;
    IShutdownMonitor* m_monitor;
};

}  // namespace quillon
