#include "providers/WmiLimit.h"

#include <algorithm>

#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"

namespace quillon {

namespace {

constexpr HRESULT kTimedOut = static_cast<HRESULT>(0x800705B4);      // ERROR_TIMEOUT
constexpr HRESULT kShuttingDown = static_cast<HRESULT>(0x800704C7);  // ERROR_CANCELLED
constexpr std::chrono::milliseconds kLook{50};

}  // namespace

WmiLimit::WmiLimit(std::int32_t deadline) : m_monitor(ServiceLocator::Get<IShutdownMonitor>(true)) {
    if (deadline > 0) m_end = Clock::now() + std::chrono::milliseconds(deadline);
}

HRESULT WmiLimit::Look() const {
    if (m_monitor != nullptr && m_monitor->IsShutdownRequested()) return kShuttingDown;
    return m_end && Clock::now() >= *m_end ? kTimedOut : S_OK;
}

WmiLimit::Clock::time_point WmiLimit::NextLook() const {
    const auto next = Clock::now() + kLook;
    return m_end ? std::min(*m_end, next) : next;
}

std::int32_t WmiLimit::Left(std::int32_t most) const {
    if (!m_end) return most;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*m_end - Clock::now()).count();
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(left, 0, most));
}

}  // namespace quillon
