#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Wbem.h"

namespace quillon {

using WmiObjects = std::vector<platform::CComPtr<IWbemClassObject>>;

/// Gets the objects of one query. ExecQuery returns at once and the enumerator is waited for in slices,
/// because a call of WMI cannot be cancelled: between two slices the host's shutdown and the deadline can
/// end the wait. One thread uses it; nothing is logged.
class WmiEnumeration {
public:
    static constexpr std::size_t kBatch = 100;

    /// The deadline counts from here, in milliseconds; 0 and less is none.
    explicit WmiEnumeration(std::int32_t deadline);

    HRESULT Start(IWbemServices& services, const std::wstring& wql);
    /// Gets the next objects, at most kBatch. Fewer than `count` are the last ones, or those that came
    /// before the failure that is returned.
    HRESULT Next(std::size_t count, WmiObjects& objects);

private:
    using Clock = std::chrono::steady_clock;

    HRESULT Take(std::size_t count, WmiObjects& objects);
    LONG SliceLength() const;
    HRESULT LookForEnd() const;

    platform::CComPtr<IEnumWbemClassObject> m_objects;
    std::optional<Clock::time_point> m_end;
};

}  // namespace quillon
